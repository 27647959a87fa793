#pragma once

#include "base/MediaTime.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace keldra {

/// Where sound is heard: interleaved stereo floats, 48,000 frames a second.
///
/// Threads: hasDevice() from any; the others from one thread at a time, and none waits for the device.
class AudioSink {
public:
    static constexpr int sampleRate = 48000;
    static constexpr int channelCount = 2;

    /// Frame number `frame` (of those written since the last reset) is heard at `hostTime`.
    struct Position {
        double frame = 0;
        MediaTime hostTime;
    };

    virtual ~AudioSink() = default;

    virtual bool hasDevice() const = 0;
    /// Takes as many frames as there is room for and answers how many; they are heard once started.
    virtual std::size_t write(const float* frames, std::size_t count) = 0;
    /// Begins, or goes on, to be heard.
    virtual void start() = 0;
    /// Falls silent, forgets what was written and counts from zero again.
    virtual void reset() = 0;
    /// Nothing before the first frame is heard, and while there is no device.
    virtual std::optional<Position> position() const = 0;
};

} // namespace keldra
