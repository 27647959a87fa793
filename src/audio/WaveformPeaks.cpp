#include "audio/WaveformPeaks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace keldra {
namespace {

int largestMagnitude(const std::int16_t* samples, std::int64_t count) {
    int largest = 0;
    for (std::int64_t i = 0; i < count; ++i)
        largest = std::max(largest, std::abs(int(samples[i])));
    return largest;
}

float heightOf(int peak) {
    constexpr float floorDecibels = 54;
    const float value = float(peak) / 32767.0F;
    if (!(value > 0))
        return 0;
    return std::clamp((20 * std::log10(value) + floorDecibels) / floorDecibels, 0.0F, 1.0F);
}

} // namespace

WaveformPeaks::WaveformPeaks(int bucketCount, double duration, Stretch stretch)
    : m_duration(duration), m_stretch(stretch), m_peaks(std::size_t(std::max(1, bucketCount))) {}

void WaveformPeaks::merge(const WaveformPeaks& other) {
    std::transform(m_peaks.begin(), m_peaks.end(), other.m_peaks.begin(), m_peaks.begin(),
                   [](int a, int b) { return std::max(a, b); });
}

std::int64_t WaveformPeaks::bucketOf(std::int64_t position) const {
    const auto count = double(m_peaks.size());
    return std::int64_t(std::min(secondsOf(position) / m_duration * count, count - 1));
}

std::int64_t WaveformPeaks::endOf(std::int64_t bucket, std::int64_t position, std::int64_t limit) const {
    const double guess = std::ceil(double(bucket + 1) / double(m_peaks.size()) * m_duration * sampleRate);
    auto end = std::int64_t(std::clamp(guess, double(position + 1), double(limit)));
    // The last digits of the two formulas may differ.
    while (end > position + 1 && bucketOf(end - 1) > bucket)
        end -= 1;
    while (end < limit && bucketOf(end) == bucket)
        end += 1;
    return end;
}

void WaveformPeaks::add(std::int64_t position, const std::int16_t* samples, std::int64_t count) {
    std::int64_t end = std::min(position + count, m_stretch.end);
    const std::int64_t early = std::max<std::int64_t>(m_stretch.begin - position, 0);
    position += early;
    samples += early;
    while (end > position && secondsOf(end - 1) > m_duration)
        end = std::max(position, std::min(end - 1, std::int64_t(m_duration * sampleRate) + 1));
    while (position < end) {
        const std::int64_t bucket = bucketOf(position);
        const std::int64_t until = endOf(bucket, position, end);
        int& peak = m_peaks[std::size_t(bucket)];
        peak = std::max(peak, largestMagnitude(samples, until - position));
        samples += until - position;
        position = until;
    }
}

std::vector<float> WaveformPeaks::heights() const {
    std::vector<float> heights(m_peaks.size());
    std::transform(m_peaks.begin(), m_peaks.end(), heights.begin(), heightOf);
    return heights;
}

} // namespace keldra
