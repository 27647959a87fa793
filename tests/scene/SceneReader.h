#pragma once

#include "imaging/PixelBuffer.h"
#include "scene/SceneLayout.h"

#include <cstdint>
#include <optional>

namespace keldra::scene {

/// The colour of a BGRA pixel, 0xRRGGBB.
inline std::uint32_t colourAt(const PixelBuffer& picture, int x, int y) {
    const std::uint8_t* pixel = picture.row(0, y) + 4 * x;
    return std::uint32_t(pixel[2]) << 16 | std::uint32_t(pixel[1]) << 8 | pixel[0];
}

/// Reads a number row of the scene whose top-left corner is at (left, top) of a BGRA picture. Nothing when the row is
/// not there: a block neither black nor white, or a wrong parity.
inline std::optional<std::uint32_t> readNumber(const PixelBuffer& picture, const NumberRow& row, int left = 0,
                                               int top = 0) {
    constexpr std::uint32_t dark = 60;
    constexpr std::uint32_t light = 195;
    std::uint32_t number = 0;
    bool isOdd = false;
    for (int i = 0; i <= row.bits; ++i) {
        const Area place = block(row, i);
        const int x = left + place.x + place.width / 2;
        const int y = top + place.y + place.height / 2;
        if (x < 0 || y < 0 || x >= picture.width() || y >= picture.height())
            return std::nullopt;
        const std::uint32_t green = colourAt(picture, x, y) >> 8 & 0xff;
        if (green > dark && green < light)
            return std::nullopt;
        isOdd ^= green >= light;
        if (i < row.bits)
            number = number << 1 | (green >= light ? 1 : 0);
    }
    return isOdd ? std::nullopt : std::optional(number);
}

} // namespace keldra::scene
