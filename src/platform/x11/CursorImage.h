#pragma once

#include "imaging/PixelBuffer.h"

#include <cstdint>
#include <vector>

namespace keldra {

/// The picture of a pointer: pixels 0xAARRGGBB, premultiplied, top row first.
struct CursorImage {
    int width = 0;
    int height = 0;
    /// The pixel that points.
    int hotspotX = 0;
    int hotspotY = 0;
    std::vector<std::uint32_t> pixels;
};

/// Draws the cursor over an opaque BGRA picture, its hotspot at (x, y) in pixels of the picture; what lies outside is
/// cut off.
void drawCursor(PixelBuffer& picture, const CursorImage& cursor, int x, int y);

} // namespace keldra
