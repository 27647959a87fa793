#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace keldra::scene {

/// A rectangle inside the window, in pixels from its top-left corner.
struct Area {
    int x;
    int y;
    int width;
    int height;
};

/// A number as a row of square blocks, black for 0 and white for 1: its bits, the most significant first, and then one
/// that makes the count of white blocks even.
struct NumberRow {
    int x;
    int y;
    int bits;
};

struct Patch {
    const char* name;
    Area area;
    std::uint32_t rgb;
};

inline constexpr int blockSize = 16;
inline constexpr NumberRow frameNumber{16, 16, 24};
/// CLOCK_MONOTONIC in milliseconds, the low 32 bits, when the frame was painted.
inline constexpr NumberRow clockMilliseconds{16, 48, 32};
inline constexpr std::uint32_t backgroundRgb = 0x606060;
inline constexpr int patchSize = 64;
inline constexpr std::array<Patch, 8> patches{{
    {"black", {16, 80, patchSize, patchSize}, 0x000000},
    {"white", {80, 80, patchSize, patchSize}, 0xffffff},
    {"red", {144, 80, patchSize, patchSize}, 0xff0000},
    {"green", {208, 80, patchSize, patchSize}, 0x00ff00},
    {"blue", {272, 80, patchSize, patchSize}, 0x0000ff},
    {"grey", {336, 80, patchSize, patchSize}, 0x808080},
    {"skin", {400, 80, patchSize, patchSize}, 0xc89678},
    {"teal", {464, 80, patchSize, patchSize}, 0x3c7882},
}};
inline constexpr int minimumWidth = 560;
inline constexpr int minimumHeight = 320;

/// What moves from frame to frame: the lower half of the window.
constexpr Area movingArea(int windowWidth, int windowHeight) {
    return {0, windowHeight / 2, windowWidth, windowHeight - windowHeight / 2};
}

/// The block of that row; `index` from 0, the last being the parity.
constexpr Area block(const NumberRow& row, int index) {
    return {row.x + index * blockSize, row.y, blockSize, blockSize};
}

/// Whether that block is white.
constexpr bool isWhite(const NumberRow& row, std::uint32_t number, int index) {
    if (index == row.bits)
        return std::popcount(number) % 2 != 0;
    return (number >> (row.bits - 1 - index) & 1) != 0;
}

} // namespace keldra::scene
