#include "imaging/Convert.h"

#include "imaging/Kernel.h"

#include <cassert>
#include <cstdint>

// libyuv has no BT.709 road
// from RGB, and its road back cannot hold BT.709's blue weight (2.11) on x86: saturated blues come out 14 too dark.
namespace keldra {
namespace {

// ITU-R BT.709-6, item 3.2: the weights of red and blue in luma.
constexpr double redWeight = 0.2126;
constexpr double blueWeight = 0.0722;
constexpr double greenWeight = 1 - redWeight - blueWeight;
// Item 3.5: 8-bit limited range; black, and the spans of luma and chroma.
constexpr int lumaBlack = 16;
constexpr int chromaZero = 128;
constexpr double lumaSpan = 219.0 / 255;
constexpr double chromaSpan = 224.0 / 255;

constexpr int fixedPoint(double value, int bits) {
    const double scaled = value * (1 << bits);
    return int(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

constexpr int toYuvBits = 15;
constexpr int yRed = fixedPoint(redWeight * lumaSpan, toYuvBits);
constexpr int yBlue = fixedPoint(blueWeight * lumaSpan, toYuvBits);
constexpr int yGreen = fixedPoint(lumaSpan, toYuvBits) - yRed - yBlue;
constexpr int uBlue = fixedPoint(0.5 * chromaSpan, toYuvBits);
constexpr int uRed = fixedPoint(-0.5 * redWeight / (1 - blueWeight) * chromaSpan, toYuvBits);
constexpr int uGreen = -uBlue - uRed;
constexpr int vRed = uBlue;
constexpr int vBlue = fixedPoint(-0.5 * blueWeight / (1 - redWeight) * chromaSpan, toYuvBits);
constexpr int vGreen = -vRed - vBlue;

constexpr int toRgbBits = 14;
constexpr int rgbLuma = fixedPoint(1 / lumaSpan, toRgbBits);
constexpr int redV = fixedPoint(2 * (1 - redWeight) / chromaSpan, toRgbBits);
constexpr int blueU = fixedPoint(2 * (1 - blueWeight) / chromaSpan, toRgbBits);
constexpr int greenU = fixedPoint(-2 * (1 - blueWeight) * blueWeight / greenWeight / chromaSpan, toRgbBits);
constexpr int greenV = fixedPoint(-2 * (1 - redWeight) * redWeight / greenWeight / chromaSpan, toRgbBits);

// A BGRA pixel as one number, which little-endian machines read as alpha, red, green, blue from the top.
using Pixel = std::uint32_t;
using Byte = std::uint8_t;

const Pixel* pixels(const PixelBuffer& buffer, int y) {
    return reinterpret_cast<const Pixel*>(buffer.row(0, y));
}

KELDRA_ROW_KERNEL void lumaRow(const Pixel* __restrict source, Byte* __restrict luma, int width) {
    for (int x = 0; x < width; ++x) {
        const Pixel pixel = source[x];
        const Pixel blue = pixel & 255;
        const Pixel green = (pixel >> 8) & 255;
        const Pixel red = (pixel >> 16) & 255;
        constexpr Pixel rounding = 1u << (toYuvBits - 1);
        luma[x] = Byte((Pixel(yRed) * red + Pixel(yGreen) * green + Pixel(yBlue) * blue +
                        (Pixel(lumaBlack) << toYuvBits) + rounding) >>
                       toYuvBits);
    }
}

inline void chromaOfBlock(Pixel a, Pixel b, Pixel c, Pixel d, Byte& u, Byte& v) {
    // Red and blue are summed in the two halves of one number.
    constexpr Pixel mask = 0x00ff00ff;
    const Pixel redAndBlue = (a & mask) + (b & mask) + (c & mask) + (d & mask);
    const int green = int(((a >> 8) & 255) + ((b >> 8) & 255) + ((c >> 8) & 255) + ((d >> 8) & 255));
    const int blue = int(redAndBlue & 0xffff);
    const int red = int(redAndBlue >> 16);
    constexpr int bits = toYuvBits + 2;
    constexpr int offset = (chromaZero << bits) + (1 << (bits - 1));
    u = Byte((uRed * red + uGreen * green + uBlue * blue + offset) >> bits);
    v = Byte((vRed * red + vGreen * green + vBlue * blue + offset) >> bits);
}

KELDRA_ROW_KERNEL void chromaRow(const Pixel* __restrict upper, const Pixel* __restrict lower, Byte* __restrict u,
                                 Byte* __restrict v, int pairs) {
    for (int x = 0; x < pairs; ++x)
        chromaOfBlock(upper[2 * x], upper[2 * x + 1], lower[2 * x], lower[2 * x + 1], u[x], v[x]);
}

inline Pixel channel(int sum) {
    const int value = sum >> toRgbBits;
    return Pixel(value < 0 ? 0 : value > 255 ? 255 : value);
}

inline Pixel pixelOf(int luma, int blue, int green, int red) {
    const int grey = rgbLuma * (luma - lumaBlack) + (1 << (toRgbBits - 1));
    return channel(grey + blue) | channel(grey + green) << 8 | channel(grey + red) << 16 | 0xff000000u;
}

KELDRA_ROW_KERNEL void rgbRow(const Byte* __restrict luma, const Byte* __restrict uRow, const Byte* __restrict vRow,
                              Pixel* __restrict target, int pairs) {
    for (int x = 0; x < pairs; ++x) {
        const int u = uRow[x] - chromaZero;
        const int v = vRow[x] - chromaZero;
        const int blue = blueU * u;
        const int green = greenU * u + greenV * v;
        const int red = redV * v;
        target[2 * x] = pixelOf(luma[2 * x], blue, green, red);
        target[2 * x + 1] = pixelOf(luma[2 * x + 1], blue, green, red);
    }
}

} // namespace

void convertBgraToI420(const PixelBuffer& source, PixelBuffer& target) {
    assert(source.format() == PixelFormat::bgra && target.format() == PixelFormat::i420);
    assert(source.width() == target.width() && source.height() == target.height());
    const int width = source.width();
    const int last = source.height() - 1;
    const int pairs = width / 2;
    for (int y = 0; y <= last; y += 2) {
        // An odd edge counts its last row or column twice.
        const int below = y < last ? y + 1 : y;
        const Pixel* upper = pixels(source, y);
        const Pixel* lower = pixels(source, below);
        lumaRow(upper, target.mutableRow(0, y), width);
        if (below != y)
            lumaRow(lower, target.mutableRow(0, below), width);
        Byte* u = target.mutableRow(1, y / 2);
        Byte* v = target.mutableRow(2, y / 2);
        chromaRow(upper, lower, u, v, pairs);
        if (width % 2 != 0)
            chromaOfBlock(upper[width - 1], upper[width - 1], lower[width - 1], lower[width - 1], u[pairs], v[pairs]);
    }
}

void convertI420ToBgra(const PixelBuffer& source, PixelBuffer& target) {
    assert(source.format() == PixelFormat::i420 && target.format() == PixelFormat::bgra);
    assert(source.width() == target.width() && source.height() == target.height());
    const int width = source.width();
    const int pairs = width / 2;
    for (int y = 0; y < source.height(); ++y) {
        auto* row = reinterpret_cast<Pixel*>(target.mutableRow(0, y));
        const Byte* luma = source.row(0, y);
        const Byte* u = source.row(1, y / 2);
        const Byte* v = source.row(2, y / 2);
        rgbRow(luma, u, v, row, pairs);
        if (width % 2 != 0) {
            const int lastU = u[pairs] - chromaZero;
            const int lastV = v[pairs] - chromaZero;
            row[width - 1] = pixelOf(luma[width - 1], blueU * lastU, greenU * lastU + greenV * lastV, redV * lastV);
        }
    }
}

std::array<std::uint8_t, 3> planarColor(PremultipliedColor color) {
    const Pixel pixel = Pixel(color.blue) | Pixel(color.green) << 8 | Pixel(color.red) << 16;
    std::array<std::uint8_t, 3> planes{};
    lumaRow(&pixel, planes.data(), 1);
    chromaOfBlock(pixel, pixel, pixel, pixel, planes[1], planes[2]);
    return planes;
}

} // namespace keldra
