#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace keldra {

/// Stereo frames on their way from one thread to another, neither of which ever waits. Frames are counted from the
/// first one ever written.
///
/// Threads: one writes and forgets, one reads.
class SoundRing {
public:
    struct Taken {
        std::int64_t firstFrame = 0;
        std::size_t count = 0;
    };

    /// Holds as many frames.
    explicit SoundRing(std::size_t depth);

    // The writer's.

    /// Takes as many frames as there is room for, and answers how many.
    std::size_t write(const float* frames, std::size_t count);
    /// What was written so far is not read any more; answers the number of the next frame.
    std::int64_t forget();
    /// The number of the first frame written since forget().
    std::int64_t firstKept() const { return m_firstKept.load(std::memory_order_relaxed); }

    // The reader's.

    /// Fills `frames` with at most `count` and tells which.
    Taken read(float* frames, std::size_t count);

private:
    static constexpr std::size_t channelCount = 2;

    std::size_t slot(std::int64_t frame) const { return std::size_t(frame) % m_capacity; }

    const std::size_t m_depth;
    /// What was forgotten keeps its place until the reader comes by, so there is room for more than the depth.
    const std::size_t m_capacity;
    std::vector<float> m_samples;
    std::atomic<std::int64_t> m_written = 0;
    std::atomic<std::int64_t> m_firstKept = 0;
    std::atomic<std::int64_t> m_read = 0;
};

} // namespace keldra
