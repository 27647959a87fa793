#pragma once

#include <cstdint>

// Rows of BGRA with premultiplied alpha, mixed as plain numbers. Products are divided by 255 and rounded to nearest.
// Porter, Duff: Compositing Digital Images (1984), "over".

namespace keldra {

/// A colour ready to be laid on a row.
struct PremultipliedColor {
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;
    std::uint8_t alpha = 0;
    friend bool operator==(const PremultipliedColor&, const PremultipliedColor&) = default;
};

/// Fills `width` pixels.
void fillRow(std::uint8_t* target, PremultipliedColor color, int width);

/// Lays the source over the target.
void blendRow(std::uint8_t* target, const std::uint8_t* source, int width);

/// The same with the source weakened by one coverage value per pixel.
void blendRowCovered(std::uint8_t* target, const std::uint8_t* source, const std::uint8_t* coverage, int width);

/// Lays one colour over the target, weakened by one coverage value per pixel.
void blendColorCovered(std::uint8_t* target, PremultipliedColor color, const std::uint8_t* coverage, int width);

/// Multiplies coverage values by another.
void scaleCoverage(std::uint8_t* target, const std::uint8_t* coverage, std::uint8_t factor, int width);

/// Whether every pixel's alpha is 255.
bool isOpaque(const std::uint8_t* row, int width);

} // namespace keldra
