#pragma once

#include "imaging/PixelBuffer.h"
#include "imaging/Resample.h"
#include "imaging/Turn.h"

#include <QRectF>
#include <QSize>
#include <QTransform>

#include <optional>

namespace keldra {

/// A transform that keeps the picture's sides along the axes, taken apart: a turn, then a placement of the turned
/// picture.
struct AxisPlacement {
    Turn turn;
    Placement placement;
    friend bool operator==(const AxisPlacement&, const AxisPlacement&) = default;
};

/// Takes the transform of a picture of that size apart; nothing when it shears or turns by anything else than quarters.
std::optional<AxisPlacement> axisPlacement(const QTransform& transform, const QSize& size);

/// The rectangle that a picture of that size takes under the transform; empty when it is not finite.
QRectF placedRect(const QTransform& transform, const QSize& size);

} // namespace keldra
