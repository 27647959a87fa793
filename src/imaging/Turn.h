#pragma once

#include "imaging/Geometry.h"
#include "imaging/PixelBuffer.h"

namespace keldra {

/// One of the eight ways to lay a picture along the axes: first mirrored left to right, or not, then turned clockwise.
struct Turn {
    bool isMirrored = false;
    int quarterTurns = 0;

    bool swapsSides() const { return quarterTurns % 2 != 0; }
    bool isNone() const { return !isMirrored && quarterTurns == 0; }
    friend bool operator==(const Turn&, const Turn&) = default;
};

/// Lays a BGRA picture that way. `target` keeps its memory when its size fits.
void turnPicture(const PixelBuffer& source, Turn turn, PixelBuffer& target);

/// The transform from a picture of `size` to the turned picture, both with their top left corner at the origin, y down.
AffineTransform turnTransform(Turn turn, const Size& size);

/// Draws a BGRA picture under any transform into a picture of its own: bilinear by pixel centres, transparent outside.
/// `transform` takes source pixels to the space in which `bounds` lie. Empty when the transform has no inverse.
PixelBuffer drawTransformed(const PixelBuffer& source, const AffineTransform& transform, const PixelRect& bounds);

} // namespace keldra
