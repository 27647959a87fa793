#include "base/MediaTime.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace keldra {
namespace {

__extension__ using Int128 = __int128;

constexpr Int128 largestTimescale = std::numeric_limits<std::int32_t>::max();

Int128 greatestCommonDivisor(Int128 a, Int128 b) {
    a = a < 0 ? -a : a;
    while (b != 0) {
        const Int128 rest = a % b;
        a = b;
        b = rest;
    }
    return a;
}

/// numerator / denominator to the nearest whole number, halves away from zero; the denominator is positive.
Int128 divideToNearest(Int128 numerator, Int128 denominator) {
    const Int128 half = denominator / 2;
    const Int128 magnitude = ((numerator < 0 ? -numerator : numerator) + half) / denominator;
    return numerator < 0 ? -magnitude : magnitude;
}

bool fits(Int128 value) {
    return value >= std::numeric_limits<std::int64_t>::min() && value <= std::numeric_limits<std::int64_t>::max();
}

} // namespace

MediaTime MediaTime::fromSeconds(double seconds, std::int32_t timescale) {
    if (std::isnan(seconds) || timescale <= 0)
        return invalid();
    const double exact = seconds * timescale;
    // 2^63 as a double; values at or beyond it do not fit.
    if (std::abs(exact) >= 9223372036854775808.0)
        return indefinite();
    const double nearest = std::round(exact);
    MediaTime time(static_cast<std::int64_t>(nearest), timescale);
    time.m_wasRounded = nearest != exact;
    return time;
}

double MediaTime::seconds() const {
    if (!isNumeric())
        return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>(m_value) / m_timescale;
}

MediaTime MediaTime::converted(std::int32_t timescale) const {
    if (!isNumeric())
        return *this;
    if (timescale <= 0)
        return invalid();
    const Int128 numerator = Int128(m_value) * timescale;
    const Int128 nearest = divideToNearest(numerator, m_timescale);
    if (!fits(nearest))
        return indefinite();
    MediaTime time(static_cast<std::int64_t>(nearest), timescale);
    time.m_wasRounded = m_wasRounded || nearest * m_timescale != numerator;
    return time;
}

MediaTime operator+(MediaTime a, MediaTime b) {
    if (!a.isNumeric() || !b.isNumeric())
        return a.m_kind >= b.m_kind ? a : b;

    const Int128 shared = greatestCommonDivisor(a.m_timescale, b.m_timescale);
    Int128 denominator = Int128(a.m_timescale) / shared * b.m_timescale;
    Int128 numerator =
        Int128(a.m_value) * (denominator / a.m_timescale) + Int128(b.m_value) * (denominator / b.m_timescale);
    bool rounded = a.m_wasRounded || b.m_wasRounded;

    if (denominator > largestTimescale || !fits(numerator)) {
        const Int128 common = std::max<Int128>(greatestCommonDivisor(numerator, denominator), 1);
        if (denominator / common <= largestTimescale) {
            numerator /= common;
            denominator /= common;
        } else {
            const Int128 finer = std::max(a.m_timescale, b.m_timescale);
            const Int128 nearest = divideToNearest(numerator * finer, denominator);
            rounded = true;
            numerator = nearest;
            denominator = finer;
        }
    }
    if (!fits(numerator))
        return MediaTime::indefinite();
    MediaTime sum(static_cast<std::int64_t>(numerator), static_cast<std::int32_t>(denominator));
    sum.m_wasRounded = rounded;
    return sum;
}

MediaTime operator-(MediaTime a) {
    if (a.isNumeric() && a.m_value == std::numeric_limits<std::int64_t>::min())
        return MediaTime::indefinite();
    a.m_value = -a.m_value;
    return a;
}

MediaTime operator-(MediaTime a, MediaTime b) {
    return a + -b;
}

MediaTime operator*(MediaTime a, std::int64_t factor) {
    if (!a.isNumeric())
        return a;
    const Int128 product = Int128(a.m_value) * factor;
    if (!fits(product))
        return MediaTime::indefinite();
    a.m_value = static_cast<std::int64_t>(product);
    return a;
}

std::weak_ordering operator<=>(const MediaTime& a, const MediaTime& b) {
    if (!a.isNumeric() || !b.isNumeric())
        return a.m_kind <=> b.m_kind;
    const Int128 left = Int128(a.m_value) * b.m_timescale;
    const Int128 right = Int128(b.m_value) * a.m_timescale;
    return left < right   ? std::weak_ordering::less
           : left > right ? std::weak_ordering::greater
                          : std::weak_ordering::equivalent;
}

std::string MediaTime::description() const {
    if (!isNumeric())
        return isIndefinite() ? "indefinite" : "invalid";
    return std::to_string(m_value) + "/" + std::to_string(m_timescale);
}

MediaTimeRange MediaTimeRange::intersection(const MediaTimeRange& other) const {
    const MediaTime from = std::max(start, other.start);
    const MediaTime to = std::min(end(), other.end());
    return {from, to > from ? to - from : MediaTime::zero()};
}

} // namespace keldra
