#pragma once

#include <algorithm>
#include <cmath>

namespace keldra {

/// `value` limited to the range, or `otherwise` when it is not finite.
inline double finiteWithin(double value, double low, double high, double otherwise = 0) {
    return std::isfinite(value) ? std::clamp(value, low, high) : otherwise;
}

/// Whether `value` can be a length: finite and above zero.
inline bool isPositiveFinite(double value) {
    return std::isfinite(value) && value > 0;
}

} // namespace keldra
