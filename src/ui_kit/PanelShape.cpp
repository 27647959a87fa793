#include "ui_kit/PanelShape.h"

#include <QPainterPath>
#include <QPolygon>

namespace keldra {

QList<RoundedRect> shapeParts(const QVariantList& parts) {
    QList<RoundedRect> shape;
    for (const QVariant& part : parts) {
        const QVariantMap fields = part.toMap();
        const auto number = [&](const char* name) { return fields.value(QLatin1String(name)).toDouble(); };
        const QRectF rect(number("x"), number("y"), number("width"), number("height"));
        if (!rect.isEmpty())
            shape.append({rect, number("radius")});
    }
    return shape;
}

QRegion shapeRegion(const QList<RoundedRect>& parts, double scale) {
    QRegion region;
    for (const RoundedRect& part : parts) {
        QPainterPath path;
        const QRectF pixels(part.rect.topLeft() * scale, part.rect.size() * scale);
        path.addRoundedRect(pixels, part.radius * scale, part.radius * scale);
        region += QRegion(path.toFillPolygon().toPolygon());
    }
    return region;
}

} // namespace keldra
