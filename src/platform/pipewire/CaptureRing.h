#pragma once

#include "platform/pipewire/DeviceClock.h"

#include <atomic>
#include <cstddef>
#include <optional>
#include <vector>

namespace keldra {

/// Blocks of sound on their way from the device's thread to another; neither waits. What there is no room for is lost,
/// and the next block's ticks tell so.
class CaptureRing {
public:
    /// Two seconds of mono or stereo, in blocks of any size that PipeWire cuts.
    CaptureRing();

    /// The device's thread. False when it was lost.
    bool write(const DeviceClock::Report& report, int channelCount, const float* samples);
    /// The other one: the oldest block's report, its samples in `samples`; nothing when there is none.
    std::optional<DeviceClock::Report> read(std::vector<float>& samples);

private:
    struct Slot {
        DeviceClock::Report report;
        std::size_t sampleCount = 0;
    };

    std::vector<float> m_samples;
    std::vector<Slot> m_slots;
    // Counted from the first one ever; the writer's and the reader's.
    std::size_t m_samplesWritten = 0;
    std::size_t m_slotsWritten = 0;
    std::size_t m_samplesRead = 0;
    std::size_t m_slotsRead = 0;
    /// What the other side may see.
    std::atomic<std::size_t> m_slotsPublished = 0;
    std::atomic<std::size_t> m_samplesFreed = 0;
    std::atomic<std::size_t> m_slotsFreed = 0;
};

} // namespace keldra
