#pragma once

#include "imaging/Geometry.h"
#include "imaging/PixelBuffer.h"
#include "platform/portal/ScreenCastStream.h"

namespace keldra {

/// Copies a part of a picture of the screen into a BGRA buffer that has the part's size. `crop` counts pixels of a
/// display of that size, as the program knows it; a picture of another size shows the same display finer or coarser,
/// and is scaled. What lies beyond the display is black.
void copyScreenCastPicture(const ScreenCastPicture& picture, const PixelRect& crop, int displayWidth, int displayHeight,
                           PixelBuffer& target);

} // namespace keldra
