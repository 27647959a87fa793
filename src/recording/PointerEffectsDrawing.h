#pragma once

#include "recording/PointerEffectsSnapshot.h"

#include <QColor>
#include <QPointF>

#include <functional>
#include <optional>
#include <vector>

class QPainter;

namespace keldra {

/// From desktop points to the painter's own; nothing where nothing is drawn.
using PointerEffectsMap = std::function<std::optional<QPointF>(QPointF)>;

/// One of the circles that the effects are made of, in the painter's own coordinates.
struct PointerEffectCircle {
    QPointF centre;
    double radius = 0;
    QColor fill;
    /// No outline when its width is 0.
    QColor outline;
    double lineWidth = 0;
    friend bool operator==(const PointerEffectCircle&, const PointerEffectCircle&) = default;
};

/// Highlight, press dot and ripples, in the order in which they are drawn. `scale` is the painter's units per point.
std::vector<PointerEffectCircle> pointerEffectCircles(const PointerEffectsSnapshot& snapshot, double scale,
                                                      const PointerEffectsMap& map);

/// The one drawing of them, for frames and for the screen.
void drawPointerEffectCircle(QPainter& painter, const PointerEffectCircle& circle);

/// Draws all of a snapshot's circles.
void drawPointerEffects(QPainter& painter, const PointerEffectsSnapshot& snapshot, double scale,
                        const PointerEffectsMap& map);

/// Whether that would draw anything.
bool hasVisibleEffects(const PointerEffectsSnapshot& snapshot, const PointerEffectsMap& map);

} // namespace keldra
