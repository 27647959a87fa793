#pragma once

#include <QList>
#include <QRectF>
#include <QRegion>
#include <QSizeF>
#include <QVariant>

namespace keldra {

/// A rounded part of a panel; points from its top left corner.
struct RoundedRect {
    QRectF rect;
    double radius = 0;
    friend bool operator==(const RoundedRect&, const RoundedRect&) = default;
};

/// What a view says that its panel consists of: objects with x, y, width, height and radius. Parts without a size are
/// left out.
QList<RoundedRect> shapeParts(const QVariantList& parts);

/// The whole pixels that the parts cover, as a window without a compositing manager is cut; `scale`: pixels per point.
QRegion shapeRegion(const QList<RoundedRect>& parts, double scale);

} // namespace keldra
