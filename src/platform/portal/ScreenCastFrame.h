#pragma once

#include "imaging/PixelBuffer.h"
#include "platform/portal/ScreenCastStream.h"

namespace keldra {

/// Copies a picture of the screen into a BGRA buffer, pixel by pixel; of a picture that is a row or a column larger the
/// last one is left out. One of another size is fitted into the buffer, on black.
void copyScreenCastPicture(const ScreenCastPicture& picture, PixelBuffer& target);

} // namespace keldra
