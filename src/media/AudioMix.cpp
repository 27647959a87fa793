#include "media/AudioMix.h"

#include "media/AudioBuffer.h"

#include <algorithm>

namespace keldra {
namespace {

void multiply(float* samples, std::int64_t count, float gain) {
    if (gain == 1)
        return;
    for (std::int64_t i = 0; i < count; ++i)
        samples[i] *= gain;
}

void multiplyRamp(float* samples, int channelCount, std::int64_t frameCount, double firstGain, double gainStep) {
    for (std::int64_t frame = 0; frame < frameCount; ++frame) {
        const auto gain = float(firstGain + gainStep * double(frame));
        for (int channel = 0; channel < channelCount; ++channel)
            *samples++ *= gain;
    }
}

} // namespace

void AudioMixParameters::insert(const Instruction& instruction) {
    const auto place =
        std::upper_bound(m_instructions.begin(), m_instructions.end(), instruction,
                         [](const Instruction& a, const Instruction& b) { return a.range.start < b.range.start; });
    m_instructions.insert(place, instruction);
}

void AudioMixParameters::setVolume(float volume, MediaTime time) {
    insert({{time, MediaTime::zero()}, volume, volume});
}

void AudioMixParameters::setVolumeRamp(float startVolume, float endVolume, const MediaTimeRange& range) {
    if (!range.isEmpty())
        insert({range, startVolume, endVolume});
}

void AudioMixParameters::apply(float* samples, int channelCount, std::int64_t frameCount, std::int64_t firstFrame,
                               int sampleRate) const {
    const std::int64_t end = firstFrame + frameCount;
    auto next = std::partition_point(m_instructions.begin(), m_instructions.end(), [&](const Instruction& candidate) {
        return firstSampleAt(candidate.range.start, sampleRate) <= firstFrame;
    });
    std::int64_t position = firstFrame;
    while (position < end) {
        const std::int64_t until =
            next == m_instructions.end() ? end : std::min(end, firstSampleAt(next->range.start, sampleRate));
        const auto take = [&](std::int64_t spanEnd) {
            float* from = samples + (position - firstFrame) * channelCount;
            const std::int64_t count = spanEnd - position;
            position = spanEnd;
            return std::pair(from, count);
        };
        if (next != m_instructions.begin()) {
            const Instruction& current = *std::prev(next);
            const std::int64_t rampEnd = std::min(until, firstSampleAt(current.range.end(), sampleRate));
            if (rampEnd > position) {
                const double length = current.range.duration.seconds();
                const double elapsed = double(position) / sampleRate - current.range.start.seconds();
                const double step = (double(current.endVolume) - double(current.startVolume)) / length;
                const auto [from, count] = take(rampEnd);
                multiplyRamp(from, channelCount, count, current.startVolume + step * elapsed, step / sampleRate);
            }
            const auto [from, count] = take(until);
            multiply(from, count * channelCount, current.endVolume);
        } else {
            position = until;
        }
        if (next != m_instructions.end())
            ++next;
    }
}

const AudioMixParameters* AudioMix::parametersOf(std::int32_t trackID) const {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const AudioMixParameters& entry) { return entry.trackID() == trackID; });
    return found == parameters.end() ? nullptr : &*found;
}

} // namespace keldra
