#pragma once

#include "recording/PointerEffectsSnapshot.h"

#include <QPointF>

#include <functional>
#include <optional>

class QPainter;

namespace keldra {

/// From desktop points to the painter's own; nothing where nothing is drawn.
using PointerEffectsMap = std::function<std::optional<QPointF>(QPointF)>;

/// Draws highlight, press dot and ripples, in this order. The one drawing of them, for frames and for the screen.
/// `scale` is the painter's units per point.
void drawPointerEffects(QPainter& painter, const PointerEffectsSnapshot& snapshot, double scale,
                        const PointerEffectsMap& map);

/// Whether that would draw anything.
bool hasVisibleEffects(const PointerEffectsSnapshot& snapshot, const PointerEffectsMap& map);

} // namespace keldra
