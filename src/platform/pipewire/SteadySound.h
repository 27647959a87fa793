#pragma once

#include "media/AudioBuffer.h"
#include "platform/pipewire/DeviceClock.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

struct SwrContext;

namespace keldra {

/// Makes of what a device hears, by its own clock, sound that is continuous at 48 kHz on the host clock: signed 24-bit
/// samples whose times are whole multiples of 1/48000 s, each following the one before. Only where the device itself
/// lost sound, or was away, is there a hole in the times.
///
/// Used on one thread.
class SteadySound {
public:
    static constexpr int sampleRate = 48000;
    using Deliver = std::function<void(AudioBuffer)>;

    SteadySound(int channelCount, Deliver deliver);
    ~SteadySound();
    SteadySound(const SteadySound&) = delete;
    SteadySound& operator=(const SteadySound&) = delete;

    AudioFormat format() const { return {SampleKind::int24, sampleRate, m_channelCount}; }

    /// The device's next block, interleaved, as many frames as reported.
    void hear(const DeviceClock::Report& report, std::vector<float> samples);
    /// The device went: what it said is delivered to its end, and what comes next is another device's, or the same
    /// one's after a pause.
    void breakOff();

private:
    struct Block {
        std::int64_t firstFrame = 0;
        std::vector<float> samples;
    };
    struct SwrDelete {
        void operator()(SwrContext* context) const;
    };

    std::int64_t framesIn(const Block& block) const { return std::int64_t(block.samples.size()) / m_channelCount; }
    /// Of the host time, counted in samples.
    double placeOf(std::int64_t frame) const { return m_clock.hostTimeOf(frame) * sampleRate; }
    void begin(std::int64_t firstFrame);
    void feed(const Block& block);
    void steer(std::int64_t firstFrame);
    void convert(const float* samples, std::int64_t frameCount);
    void deliverFrom(std::int64_t fewest);
    void end();

    const int m_channelCount;
    const Deliver m_deliver;
    DeviceClock m_clock{sampleRate};
    /// What the clock is in doubt about.
    std::vector<Block> m_kept;
    /// Present from a piece's begin to its end.
    std::unique_ptr<SwrContext, SwrDelete> m_resampler;
    /// Converted and not delivered.
    std::vector<float> m_ready;
    /// The place of the first of these.
    std::int64_t m_next = 0;
    /// Frames of the device that would overlap what was delivered.
    std::int64_t m_toSkip = 0;
};

} // namespace keldra
