#pragma once

#include <cstdint>

namespace keldra {

/// How finely the next picture of a recording may be encoded, so that over a few seconds it keeps to its bit rate.
///
/// Pictures of a screen come when something changes, so what counts is time, not how many they were: a still screen is
/// sharp, and its savings last a flood for two seconds at most. A value.
class BitBudget {
public:
    explicit BitBudget(std::int64_t bitsPerSecond);

    /// x264's constant rate factor for a picture of that time, which is not before the last one's.
    double rateFactorAt(double seconds);
    void spend(std::int64_t bits) { m_bits -= double(bits); }

private:
    double m_bitsPerSecond;
    double m_mostBits;
    /// Negative when too much was spent.
    double m_bits;
    double m_seconds = 0;
};

} // namespace keldra
