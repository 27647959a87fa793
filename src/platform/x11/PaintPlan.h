#pragma once

#include <QRect>
#include <QRegion>

#include <vector>

namespace keldra {

/// A window as far as painting needs it; root pixels.
struct PaintItem {
    QRect rect;
    /// Whether it hides all that lies under its rectangle.
    bool isOpaque = true;
};

/// What is painted, so that no pixel is painted under an opaque one: the background first, then the items' regions in
/// their order. Regions lie inside `area`; that of a hidden item is empty.
struct PaintPlan {
    QRegion background;
    std::vector<QRegion> items;
};

/// `items` go from the bottom to the top.
PaintPlan planPainting(const QRect& area, const std::vector<PaintItem>& items);

} // namespace keldra
