#pragma once

#include "imaging/Blend.h"
#include "imaging/PixelBuffer.h"

#include <array>
#include <cstdint>

namespace keldra {

/// BGRA to 4:2:0, BT.709 limited range, chroma from the mean of each 2x2 block; alpha is ignored. Both buffers have
/// the same size. ITU-R BT.709-6, quantised as in its section 4.
void convertBgraToI420(const PixelBuffer& source, PixelBuffer& target);

/// The reverse; alpha becomes opaque.
void convertI420ToBgra(const PixelBuffer& source, PixelBuffer& target);

/// One colour in the numbers of the three planes; alpha is ignored.
std::array<std::uint8_t, 3> planarColor(PremultipliedColor color);

} // namespace keldra
