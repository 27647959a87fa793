#include "platform/x11/CursorImage.h"

#include <algorithm>

namespace keldra {
namespace {

/// a * b / 255, rounded to nearest, for values up to 255.
unsigned scaled(unsigned a, unsigned b) {
    const unsigned product = a * b + 128;
    return (product + (product >> 8)) >> 8;
}

void blend(std::uint8_t* target, std::uint32_t source) {
    const unsigned rest = 255 - (source >> 24);
    for (int channel = 0; channel < 3; ++channel) {
        const unsigned colour = (source >> (8 * channel)) & 0xff;
        target[channel] = std::uint8_t(std::min(255u, colour + scaled(target[channel], rest)));
    }
    target[3] = 255;
}

} // namespace

void drawCursor(PixelBuffer& picture, const CursorImage& cursor, int x, int y) {
    const PixelRect place{x - cursor.hotspotX, y - cursor.hotspotY, cursor.width, cursor.height};
    const PixelRect visible = place.intersection({0, 0, picture.width(), picture.height()});
    for (int row = visible.y; row < visible.bottom(); ++row) {
        const std::uint32_t* source = cursor.pixels.data() + std::ptrdiff_t(row - place.y) * cursor.width;
        std::uint8_t* target = picture.mutableRow(0, row);
        for (int column = visible.x; column < visible.right(); ++column)
            blend(target + 4 * column, source[column - place.x]);
    }
}

} // namespace keldra
