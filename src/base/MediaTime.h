#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace keldra {

/// A rational moment or length: value / timescale seconds.
///
/// Comparisons are exact (in 128 bits), so 1/2 == 2/4. A time that is not numeric is `invalid` (nothing was measured)
/// or `indefinite` (measured, but without an end); in order: every number < indefinite < invalid.
///
/// A sum is exact whenever some timescale below 2^31 holds it. Otherwise it is rounded to the nearest value of the
/// finer of the two timescales and carries `wasRounded`, as does everything computed from it. A sum beyond 64 bits is
/// indefinite; arithmetic with a time that is not numeric gives that time back (invalid before indefinite).
class MediaTime {
public:
    constexpr MediaTime() = default;
    /// `timescale` must be positive.
    constexpr MediaTime(std::int64_t value, std::int32_t timescale)
        : m_value(value), m_timescale(timescale), m_kind(timescale > 0 ? Kind::numeric : Kind::invalid) {}

    static constexpr MediaTime zero() { return MediaTime(0, 1); }
    static constexpr MediaTime invalid() { return MediaTime(); }
    static constexpr MediaTime indefinite() {
        MediaTime time;
        time.m_kind = Kind::indefinite;
        return time;
    }
    /// The nearest multiple of 1/timescale; invalid for NaN, indefinite for what 64 bits do not hold.
    static MediaTime fromSeconds(double seconds, std::int32_t timescale);

    constexpr std::int64_t value() const { return m_value; }
    constexpr std::int32_t timescale() const { return m_timescale; }
    constexpr bool isValid() const { return m_kind != Kind::invalid; }
    constexpr bool isNumeric() const { return m_kind == Kind::numeric; }
    constexpr bool isIndefinite() const { return m_kind == Kind::indefinite; }
    constexpr bool wasRounded() const { return m_wasRounded; }

    /// NaN when not numeric.
    double seconds() const;
    /// The nearest value of that timescale, halves away from zero; flagged when something was lost.
    MediaTime converted(std::int32_t timescale) const;

    friend MediaTime operator+(MediaTime a, MediaTime b);
    friend MediaTime operator-(MediaTime a, MediaTime b);
    friend MediaTime operator-(MediaTime a);
    friend MediaTime operator*(MediaTime a, std::int64_t factor);
    friend std::weak_ordering operator<=>(const MediaTime& a, const MediaTime& b);
    friend bool operator==(const MediaTime& a, const MediaTime& b) { return (a <=> b) == 0; }

    /// For messages: "1/2", "invalid", "indefinite".
    std::string description() const;

private:
    enum class Kind : std::uint8_t { numeric, indefinite, invalid };

    std::int64_t m_value = 0;
    std::int32_t m_timescale = 0;
    Kind m_kind = Kind::invalid;
    bool m_wasRounded = false;
};

/// A half-open stretch of time: from `start` up to, not including, `end()`.
struct MediaTimeRange {
    MediaTime start = MediaTime::zero();
    MediaTime duration = MediaTime::zero();

    MediaTime end() const { return start + duration; }
    bool isEmpty() const { return !duration.isNumeric() || duration <= MediaTime::zero(); }
    bool contains(MediaTime time) const { return start <= time && time < end(); }
    /// Ranges that merely touch do not overlap.
    bool overlaps(const MediaTimeRange& other) const { return start < other.end() && other.start < end(); }
    /// Empty, at the later start, when there is nothing in common.
    MediaTimeRange intersection(const MediaTimeRange& other) const;

    friend bool operator==(const MediaTimeRange&, const MediaTimeRange&) = default;
};

} // namespace keldra
