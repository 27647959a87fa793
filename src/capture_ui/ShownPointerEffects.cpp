#include "capture_ui/ShownPointerEffects.h"

#include <QPainter>

#include <algorithm>

namespace keldra {
namespace {

/// For soft edges.
constexpr double margin = 1;
/// Of a circle that has no line of its own.
constexpr double plainLineWidth = 3;

QRectF squareAround(QPointF centre, double reach) {
    return {centre.x() - reach, centre.y() - reach, 2 * reach, 2 * reach};
}

/// Between two circles, in the coordinates of the view.
struct Ring {
    QPointF centre;
    double outer;
    double inner;
    QColor color;
};

Ring ringOf(const PointerEffectCircle& circle, const ViewSpace& space) {
    const QPointF centre = space.toView(circle.centre);
    const bool hasLine = circle.lineWidth > 0;
    QColor color = hasLine ? circle.outline : circle.fill;
    color.setAlpha(255);
    if (hasLine)
        return {centre, circle.radius + circle.lineWidth / 2, circle.radius - circle.lineWidth / 2, color};
    return {centre, circle.radius, circle.radius - plainLineWidth, color};
}

} // namespace

std::vector<QRectF> ShownPointerEffects::update(const PointerEffectsSnapshot& snapshot) {
    std::vector<PointerEffectCircle> circles =
        pointerEffectCircles(snapshot, 1, [](QPointF point) { return std::optional(point); });
    if (circles == m_circles)
        return {};
    std::vector<QRectF> parts;
    for (const auto* each : {&m_circles, &circles})
        for (const PointerEffectCircle& circle : *each)
            parts.push_back(squareAround(circle.centre, circle.radius + circle.lineWidth / 2 + margin));
    m_circles = std::move(circles);
    return parts;
}

void ShownPointerEffects::paint(QPainter& painter, const ViewSpace& space) const {
    for (PointerEffectCircle circle : m_circles) {
        circle.centre = space.toView(circle.centre);
        drawPointerEffectCircle(painter, circle);
    }
}

void ShownPointerEffects::paintOutlines(QPainter& painter, const ViewSpace& space) const {
    painter.setBrush(Qt::NoBrush);
    for (const PointerEffectCircle& circle : m_circles) {
        const Ring ring = ringOf(circle, space);
        const double middle = (ring.outer + ring.inner) / 2;
        // Soft edges would mix with the ground that is not there: the shape cuts them off.
        painter.setPen(QPen(ring.color, ring.outer - ring.inner + 2 * margin));
        painter.drawEllipse(ring.centre, middle, middle);
    }
}

QPainterPath ShownPointerEffects::outlines(const ViewSpace& space) const {
    QPainterPath path;
    for (const PointerEffectCircle& circle : m_circles) {
        const Ring ring = ringOf(circle, space);
        QPainterPath disc;
        disc.addEllipse(ring.centre, ring.outer, ring.outer);
        QPainterPath hole;
        hole.addEllipse(ring.centre, ring.inner, ring.inner);
        path = path.united(disc.subtracted(hole));
    }
    return path;
}

} // namespace keldra
