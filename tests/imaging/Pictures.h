#pragma once

#include "imaging/PixelBuffer.h"

#include <array>
#include <random>

namespace keldra::test {

using Pixel = std::array<int, 4>;

/// Blue, green, red, alpha.
inline Pixel pixelAt(const PixelBuffer& picture, int x, int y) {
    const std::uint8_t* at = picture.row(0, y) + std::ptrdiff_t(x) * 4;
    return {at[0], at[1], at[2], at[3]};
}

/// A picture whose pixels `color(x, y)` gives.
template <typename Color>
PixelBuffer paint(int width, int height, Color color) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Pixel pixel = color(x, y);
            for (int channel = 0; channel < 4; ++channel)
                picture.mutableRow(0, y)[x * 4 + channel] = std::uint8_t(pixel[std::size_t(channel)]);
        }
    return picture;
}

inline PixelBuffer flat(int width, int height, Pixel color) {
    return paint(width, height, [&](int, int) { return color; });
}

/// Opaque noise.
inline PixelBuffer noise(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    const auto byte = [&] { return int(random() % 256); };
    return paint(width, height, [&](int, int) { return Pixel{byte(), byte(), byte(), 255}; });
}

} // namespace keldra::test
