#include "imaging/Convert.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace keldra {
namespace {

using Colour = std::array<double, 3>; // red, green, blue, 0 to 255
using Yuv = std::array<double, 3>;

Yuv yuvOf(const Colour& rgb) {
    const double luma = 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2];
    return {16 + 219 * luma / 255, 128 + 224 * (rgb[2] - luma) / 1.8556 / 255,
            128 + 224 * (rgb[0] - luma) / 1.5748 / 255};
}

Colour rgbOf(const Yuv& yuv) {
    const double luma = (yuv[0] - 16) * 255 / 219;
    const double blue = luma + 1.8556 * (yuv[1] - 128) * 255 / 224;
    const double red = luma + 1.5748 * (yuv[2] - 128) * 255 / 224;
    const double green = (luma - 0.2126 * red - 0.0722 * blue) / 0.7152;
    return {std::clamp(red, 0.0, 255.0), std::clamp(green, 0.0, 255.0), std::clamp(blue, 0.0, 255.0)};
}

/// Red, green, blue of a pixel.
Colour colourAt(const PixelBuffer& buffer, int x, int y) {
    const std::uint8_t* pixel = buffer.row(0, y) + 4 * x;
    return {double(pixel[2]), double(pixel[1]), double(pixel[0])};
}

PixelBuffer noise(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    PixelBuffer buffer = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        std::generate_n(buffer.mutableRow(0, y), width * 4, [&] { return std::uint8_t(random()); });
    return buffer;
}

TEST(Convert, FollowsTheFormulaToWithinOneInBothDirectionsAndAtAnySize) {
    for (const auto& [width, height] :
         {std::pair{1, 1}, {2, 2}, {3, 1}, {1, 5}, {17, 9}, {66, 34}, {67, 35}, {641, 3}}) {
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
        const PixelBuffer source = noise(width, height, unsigned(width * 1000 + height));
        PixelBuffer yuv = PixelBuffer::allocate(PixelFormat::i420, width, height);
        convertBgraToI420(source, yuv);
        double worstLuma = 0;
        double worstChroma = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                worstLuma = std::max(worstLuma, std::abs(yuvOf(colourAt(source, x, y))[0] - yuv.row(0, y)[x]));
                Colour mean{};
                for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
                    const Colour part =
                        colourAt(source, std::min((x & ~1) + dx, width - 1), std::min((y & ~1) + dy, height - 1));
                    for (int i = 0; i < 3; ++i)
                        mean[i] += part[i] / 4;
                }
                const Yuv expected = yuvOf(mean);
                for (int plane = 1; plane < 3; ++plane)
                    worstChroma = std::max(worstChroma, std::abs(expected[plane] - yuv.row(plane, y / 2)[x / 2]));
            }
        EXPECT_LE(worstLuma, 1);
        EXPECT_LE(worstChroma, 1);

        PixelBuffer back = PixelBuffer::allocate(PixelFormat::bgra, width, height);
        convertI420ToBgra(yuv, back);
        double worstRgb = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const Colour expected = rgbOf(
                    {double(yuv.row(0, y)[x]), double(yuv.row(1, y / 2)[x / 2]), double(yuv.row(2, y / 2)[x / 2])});
                const Colour actual = colourAt(back, x, y);
                for (int i = 0; i < 3; ++i)
                    worstRgb = std::max(worstRgb, std::abs(expected[i] - actual[i]));
                ASSERT_EQ(back.row(0, y)[4 * x + 3], 255);
            }
        EXPECT_LE(worstRgb, 1);
    }
}

TEST(Convert, GivesBackEveryCodeOfTheCubeWithinOneOfTheFormula) {
    // One row holds all lumas of one pair of chroma values.
    PixelBuffer yuv = PixelBuffer::allocate(PixelFormat::i420, 256, 2);
    PixelBuffer rgb = PixelBuffer::allocate(PixelFormat::bgra, 256, 2);
    for (int x = 0; x < 256; ++x)
        yuv.mutableRow(0, 0)[x] = yuv.mutableRow(0, 1)[x] = std::uint8_t(x);
    double worst = 0;
    for (int u = 0; u < 256; u += 3)
        for (int v = 0; v < 256; v += 3) {
            std::memset(yuv.mutableRow(1, 0), u, 128);
            std::memset(yuv.mutableRow(2, 0), v, 128);
            convertI420ToBgra(yuv, rgb);
            for (int x = 0; x < 256; ++x) {
                const Colour expected = rgbOf({double(x), double(u), double(v)});
                const Colour actual = colourAt(rgb, x, 1);
                for (int i = 0; i < 3; ++i)
                    worst = std::max(worst, std::abs(expected[i] - actual[i]));
            }
        }
    EXPECT_LE(worst, 1);
}

TEST(Convert, StaysInsideACroppedPicture) {
    PixelBuffer whole = PixelBuffer::allocate(PixelFormat::i420, 64, 8);
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < whole.planeHeight(plane); ++y)
            std::memset(whole.mutableRow(plane, y), 7, std::size_t(whole.planeWidth(plane)));
    PixelBuffer part = whole.cropped({2, 2, 33, 3});
    convertBgraToI420(noise(33, 3, 5), part);
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1;
        const PixelRect inside{2 >> shift, 2 >> shift, part.planeWidth(plane), part.planeHeight(plane)};
        for (int y = 0; y < whole.planeHeight(plane); ++y)
            for (int x = 0; x < whole.planeWidth(plane); ++x) {
                const bool isInside = x >= inside.x && x < inside.right() && y >= inside.y && y < inside.bottom();
                if (!isInside) {
                    ASSERT_EQ(whole.row(plane, y)[x], 7) << plane << ": " << x << ", " << y;
                }
            }
    }
}

} // namespace
} // namespace keldra
