#include "imaging/Turn.h"

#include <cassert>
#include <cmath>
#include <cstring>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate_argb.h>

namespace keldra {
namespace {

constexpr int bytesPerPixel = 4;

libyuv::RotationMode rotationMode(int quarterTurns) {
    switch (quarterTurns) {
    case 1:
        return libyuv::kRotate90;
    case 2:
        return libyuv::kRotate180;
    case 3:
        return libyuv::kRotate270;
    default:
        return libyuv::kRotate0;
    }
}

/// The pixel at that place; transparent outside.
struct Sampler {
    const PixelBuffer& source;

    const std::uint8_t* at(int x, int y) const {
        static constexpr std::uint8_t nothing[bytesPerPixel] = {};
        const bool inside = x >= 0 && y >= 0 && x < source.width() && y < source.height();
        return inside ? source.row(0, y) + std::ptrdiff_t(x) * bytesPerPixel : nothing;
    }

    void interpolate(double x, double y, std::uint8_t* target) const {
        const int left = int(std::floor(x));
        const int top = int(std::floor(y));
        const int right256 = int((x - left) * 256);
        const int lower256 = int((y - top) * 256);
        const std::uint8_t* corners[] = {at(left, top), at(left + 1, top), at(left, top + 1), at(left + 1, top + 1)};
        for (int channel = 0; channel < bytesPerPixel; ++channel) {
            const int upper = corners[0][channel] * (256 - right256) + corners[1][channel] * right256;
            const int lower = corners[2][channel] * (256 - right256) + corners[3][channel] * right256;
            target[channel] = std::uint8_t((upper * (256 - lower256) + lower * lower256 + 32768) >> 16);
        }
    }
};

} // namespace

void turnPicture(const PixelBuffer& source, Turn turn, PixelBuffer& target) {
    assert(source.format() == PixelFormat::bgra);
    const int width = turn.swapsSides() ? source.height() : source.width();
    const int height = turn.swapsSides() ? source.width() : source.height();
    if (target.width() != width || target.height() != height)
        target = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    PixelBuffer mirrored = source;
    if (turn.isMirrored) {
        mirrored =
            turn.quarterTurns == 0 ? target : PixelBuffer::allocate(PixelFormat::bgra, source.width(), source.height());
        libyuv::ARGBMirror(source.data(), int(source.strideBytes()), mirrored.mutableData(),
                           int(mirrored.strideBytes()), source.width(), source.height());
        if (turn.quarterTurns == 0)
            return;
    }
    libyuv::ARGBRotate(mirrored.data(), int(mirrored.strideBytes()), target.mutableData(), int(target.strideBytes()),
                       source.width(), source.height(), rotationMode(turn.quarterTurns));
}

AffineTransform turnTransform(Turn turn, const Size& size) {
    // Mirrored, x is width - x; the turns are clockwise with y down.
    const double sign = turn.isMirrored ? -1 : 1;
    const double start = turn.isMirrored ? size.width : 0;
    switch (turn.quarterTurns) {
    case 1:
        return {0, sign, -1, 0, size.height, start};
    case 2:
        return {-sign, 0, 0, -1, size.width - start, size.height};
    case 3:
        return {0, -sign, 1, 0, 0, size.width - start};
    default:
        return {sign, 0, 0, 1, start, 0};
    }
}

PixelBuffer drawTransformed(const PixelBuffer& source, const AffineTransform& transform, const PixelRect& bounds) {
    const double determinant = transform.a * transform.d - transform.b * transform.c;
    if (bounds.isEmpty() || !std::isfinite(determinant) || determinant == 0)
        return {};
    PixelBuffer drawn = PixelBuffer::allocate(PixelFormat::bgra, bounds.width, bounds.height);
    const Sampler sampler{source};
    for (int y = 0; y < bounds.height; ++y) {
        std::uint8_t* row = drawn.mutableRow(0, y);
        for (int x = 0; x < bounds.width; ++x) {
            const double fromX = bounds.x + x + 0.5 - transform.tx;
            const double fromY = bounds.y + y + 0.5 - transform.ty;
            const double sourceX = (transform.d * fromX - transform.c * fromY) / determinant - 0.5;
            const double sourceY = (transform.a * fromY - transform.b * fromX) / determinant - 0.5;
            std::uint8_t* pixel = row + std::ptrdiff_t(x) * bytesPerPixel;
            if (sourceX > -1 && sourceY > -1 && sourceX < source.width() && sourceY < source.height())
                sampler.interpolate(sourceX, sourceY, pixel);
            else
                std::memset(pixel, 0, bytesPerPixel);
        }
    }
    return drawn;
}

} // namespace keldra
