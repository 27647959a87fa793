#pragma once

#include "imaging/Blend.h"
#include "imaging/PixelBuffer.h"
#include "project/CanvasGradient.h"

namespace keldra {

/// The cleaned colour in eight bits, premultiplied.
PremultipliedColor premultiplied(const RGBAColor& color);

/// Fills a BGRA picture with a two-colour blend, axial or radial, evaluated at pixel centres. The colours are cleaned
/// and mixed premultiplied. A linear gradient reaches its colours in opposite corners at any angle, a radial one its
/// outer colour in all corners. A linear gradient without a direction is its start colour.
void fillGradient(PixelBuffer& target, const CanvasGradient& gradient);

} // namespace keldra
