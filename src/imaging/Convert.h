#pragma once

#include "imaging/PixelBuffer.h"

namespace keldra {

/// BGRA to 4:2:0, BT.709 limited range, chroma from the mean of each 2x2 block; alpha is ignored. Both buffers have
/// the same size. ITU-R BT.709-6, quantised as in its section 4.
void convertBgraToI420(const PixelBuffer& source, PixelBuffer& target);

/// The reverse; alpha becomes opaque.
void convertI420ToBgra(const PixelBuffer& source, PixelBuffer& target);

} // namespace keldra
