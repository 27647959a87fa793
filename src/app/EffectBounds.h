#pragma once

namespace keldra {

/// The least and the most that a slider gives.
struct Bounds {
    double least = 0;
    double most = 0;

    /// What is no number becomes the least.
    constexpr double clamp(double value) const { return value >= most ? most : value >= least ? value : least; }
};

/// Bounds of what the user sets for the effects around the pointer.
namespace effectBounds {
inline constexpr Bounds clickIndicatorIntensity{0.5, 2.0};
inline constexpr Bounds cursorHighlightIntensity{0.2, 1.0};
/// Points.
inline constexpr Bounds cursorHighlightSize{32, 80};
} // namespace effectBounds

} // namespace keldra
