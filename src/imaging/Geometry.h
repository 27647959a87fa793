#pragma once

#include <algorithm>
#include <cmath>

namespace keldra {

/// Width and height in pixels, possibly fractional.
struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

/// A rectangle of whole pixels: origin top left, y down.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    PixelRect intersection(const PixelRect& other) const {
        const int left = std::max(x, other.x);
        const int top = std::max(y, other.y);
        return {left, top, std::max(0, std::min(right(), other.right()) - left),
                std::max(0, std::min(bottom(), other.bottom()) - top)};
    }
    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// x' = a*x + c*y + tx, y' = b*x + d*y + ty.
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

} // namespace keldra
