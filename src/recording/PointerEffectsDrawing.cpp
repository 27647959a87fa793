#include "recording/PointerEffectsDrawing.h"

#include <QPainter>

#include <algorithm>

namespace keldra {
namespace {

QColor grey(double value, double alpha) {
    return QColor::fromRgbF(float(value), float(value), float(value), float(alpha));
}

void addHighlight(std::vector<PointerEffectCircle>& circles, const PointerEffectsSnapshot& snapshot, QPointF centre,
                  double scale) {
    const double radius = scale * snapshot.cursorHighlightSize * 0.5;
    const double intensity = snapshot.cursorHighlightIntensity;
    circles.push_back({centre, radius, QColor::fromRgbF(1.0F, 0.82F, 0.08F, float(intensity * 0.18 + 0.12)), {}, 0});
    circles.push_back(
        {centre, radius * 0.64, QColor::fromRgbF(1.0F, 0.88F, 0.24F, float(intensity * 0.28 + 0.18)), {}, 0});
}

PointerEffectCircle rippleCircle(double progress, QPointF centre, double scale, double intensity) {
    const double p = std::clamp(progress, 0.0, 1.0);
    const double strength = std::min((1 - p) * std::min(intensity * 0.5 + 0.5, 1.5), 1.0);
    return {centre, scale * (p * 24 + 10), grey(0.36, strength * 0.3), grey(0.56, strength * 0.96),
            scale * std::max(4.2 - 1.6 * p, 2.6)};
}

} // namespace

std::vector<PointerEffectCircle> pointerEffectCircles(const PointerEffectsSnapshot& snapshot, double scale,
                                                      const PointerEffectsMap& map) {
    std::vector<PointerEffectCircle> circles;
    const std::optional<QPointF> cursor = snapshot.cursorLocation ? map(*snapshot.cursorLocation) : std::nullopt;
    if (snapshot.showsCursorHighlight && cursor)
        addHighlight(circles, snapshot, *cursor, scale);
    if (!snapshot.showsClickIndicators)
        return circles;
    const double intensity = std::clamp(snapshot.clickIndicatorIntensity, 0.5, 2.0);
    const double clickScale = scale * (intensity * 0.35 + 0.65);
    if (snapshot.isClickPressActive && cursor)
        circles.push_back({*cursor, clickScale * 6.5, grey(0.48, 0.86), {}, 0});
    for (const PointerRippleSnapshot& ripple : snapshot.clickRipples)
        if (const auto centre = map(ripple.location))
            circles.push_back(rippleCircle(ripple.progress, *centre, clickScale, intensity));
    return circles;
}

void drawPointerEffectCircle(QPainter& painter, const PointerEffectCircle& circle) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(circle.fill);
    painter.drawEllipse(circle.centre, circle.radius, circle.radius);
    if (circle.lineWidth <= 0)
        return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(circle.outline, circle.lineWidth));
    painter.drawEllipse(circle.centre, circle.radius, circle.radius);
}

void drawPointerEffects(QPainter& painter, const PointerEffectsSnapshot& snapshot, double scale,
                        const PointerEffectsMap& map) {
    for (const PointerEffectCircle& circle : pointerEffectCircles(snapshot, scale, map))
        drawPointerEffectCircle(painter, circle);
}

bool hasVisibleEffects(const PointerEffectsSnapshot& snapshot, const PointerEffectsMap& map) {
    const bool marksCursor =
        snapshot.showsCursorHighlight || (snapshot.showsClickIndicators && snapshot.isClickPressActive);
    if (marksCursor && snapshot.cursorLocation && map(*snapshot.cursorLocation))
        return true;
    return snapshot.showsClickIndicators &&
           std::any_of(snapshot.clickRipples.begin(), snapshot.clickRipples.end(),
                       [&](const PointerRippleSnapshot& ripple) { return map(ripple.location).has_value(); });
}

} // namespace keldra
