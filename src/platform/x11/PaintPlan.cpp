#include "platform/x11/PaintPlan.h"

namespace keldra {

PaintPlan planPainting(const QRect& area, const std::vector<PaintItem>& items) {
    PaintPlan plan;
    plan.items.resize(items.size());
    plan.background = area;
    for (std::size_t i = items.size(); i-- > 0;) {
        plan.items[i] = plan.background & items[i].rect;
        if (items[i].isOpaque)
            plan.background -= items[i].rect;
    }
    return plan;
}

} // namespace keldra
