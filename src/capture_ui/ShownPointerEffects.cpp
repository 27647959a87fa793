#include "capture_ui/ShownPointerEffects.h"

#include <QPainter>

#include <utility>

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

std::vector<Ring> ringsOf(const std::vector<PointerEffectCircle>& circles, const ViewSpace& space) {
    std::vector<Ring> rings;
    bool hasPlain = false;
    for (const PointerEffectCircle& circle : circles) {
        const bool hasLine = circle.lineWidth > 0;
        // All plain ones lie around the pointer, the largest first; one ring is enough to see where that is.
        if (!hasLine && std::exchange(hasPlain, true))
            continue;
        QColor color = hasLine ? circle.outline : circle.fill;
        color.setAlpha(255);
        const double outer = circle.radius + circle.lineWidth / 2;
        rings.push_back(
            {space.toView(circle.centre), outer, outer - (hasLine ? circle.lineWidth : plainLineWidth), color});
    }
    return rings;
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
    for (const Ring& ring : ringsOf(m_circles, space)) {
        const double middle = (ring.outer + ring.inner) / 2;
        // Soft edges would mix with the ground that is not there: the shape cuts them off.
        painter.setPen(QPen(ring.color, ring.outer - ring.inner + 2 * margin));
        painter.drawEllipse(ring.centre, middle, middle);
    }
}

QPainterPath ShownPointerEffects::outlines(const ViewSpace& space) const {
    QPainterPath path;
    // Holes run the other way round, so that they take nothing from rings that cross them.
    path.setFillRule(Qt::WindingFill);
    for (const Ring& ring : ringsOf(m_circles, space)) {
        path.addEllipse(ring.centre, ring.outer, ring.outer);
        QPainterPath hole;
        hole.addEllipse(ring.centre, ring.inner, ring.inner);
        path.addPath(hole.toReversed());
    }
    return path;
}

} // namespace keldra
