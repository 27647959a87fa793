#pragma once

namespace keldra {

/// A colour as plain numbers from 0 to 1, alpha not multiplied in. Stored values are not trusted: whoever paints uses
/// cleaned().
struct RGBAColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const RGBAColor&, const RGBAColor&) = default;
};

/// Every component within 0 to 1; what is not finite becomes 0.
RGBAColor cleaned(const RGBAColor& color);

} // namespace keldra
