#include "project/CanvasStyle.h"

namespace keldra {

CanvasStyle freshCanvasStyle() {
    CanvasStyle style;
    style.background = defaultGradient();
    style.paddingFraction = {0.05, 0.05, 0.05, 0.05};
    style.shadow = CanvasShadow{};
    style.cornerRadiusFraction = 0.02;
    return style;
}

} // namespace keldra
