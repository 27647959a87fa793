#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace keldra {

/// The largest sample of each of the equal stretches, the buckets, of a span of 8000 Hz mono sound.
class WaveformPeaks {
public:
    static constexpr int sampleRate = 8000;

    /// Samples by number, from zero: up to, not including, `end`.
    struct Stretch {
        std::int64_t begin = 0;
        std::int64_t end = std::numeric_limits<std::int64_t>::max();
    };

    /// `duration` in seconds, more than zero; at least one bucket. Only samples of the stretch are looked at.
    WaveformPeaks(int bucketCount, double duration, Stretch stretch);
    WaveformPeaks(int bucketCount, double duration) : WaveformPeaks(bucketCount, duration, Stretch()) {}

    /// Takes samples, the first of which is number `position` from zero. What lies outside the span is passed over; a
    /// sample at its very end counts for the last bucket.
    void add(std::int64_t position, const std::int16_t* samples, std::int64_t count);

    /// Takes what another stretch of the same sound came to.
    void merge(const WaveformPeaks& other);

    const Stretch& stretch() const { return m_stretch; }
    /// 0 to 1 by bucket: decibels from -54 dBFS to full scale.
    std::vector<float> heights() const;

private:
    double secondsOf(std::int64_t position) const { return double(position) / sampleRate; }
    std::int64_t bucketOf(std::int64_t position) const;
    /// The first sample that is not in this bucket, or `limit`.
    std::int64_t endOf(std::int64_t bucket, std::int64_t position, std::int64_t limit) const;

    double m_duration;
    Stretch m_stretch;
    /// As integers; 32767 is full scale.
    std::vector<int> m_peaks;
};

} // namespace keldra
