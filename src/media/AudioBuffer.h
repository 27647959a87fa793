#pragma once

#include "base/MediaTime.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace keldra {

/// How one sample is stored, in the machine's byte order; int24 is packed into three bytes.
enum class SampleKind { int16, int24, float32 };

/// What interleaved PCM is made of. A frame is one sample of each channel.
struct AudioFormat {
    SampleKind kind = SampleKind::float32;
    /// Frames per second.
    int sampleRate = 0;
    int channelCount = 0;

    int bytesPerSample() const { return kind == SampleKind::int16 ? 2 : kind == SampleKind::int24 ? 3 : 4; }
    int bytesPerFrame() const { return bytesPerSample() * channelCount; }

    friend bool operator==(const AudioFormat&, const AudioFormat&) = default;
};

/// Interleaved PCM with its format and time. A value: copies share the samples, which only their maker writes, before
/// it hands them on.
class AudioBuffer {
public:
    /// Empty.
    AudioBuffer() = default;
    /// Silent.
    static AudioBuffer allocate(const AudioFormat& format, std::int64_t frameCount, MediaTime time);
    /// Samples that are stored elsewhere; `bytes` keeps them.
    static AudioBuffer sharing(const AudioFormat& format, std::int64_t frameCount, MediaTime time,
                               std::shared_ptr<const std::byte> bytes);

    explicit operator bool() const { return m_frameCount > 0; }
    const AudioFormat& format() const { return m_format; }
    std::int64_t frameCount() const { return m_frameCount; }
    /// Of the first frame.
    MediaTime time() const { return m_time; }
    MediaTime endTime() const { return m_time + MediaTime(m_frameCount, m_format.sampleRate); }
    std::int64_t byteCount() const { return m_frameCount * m_format.bytesPerFrame(); }

    const std::byte* bytes() const { return m_bytes.get(); }
    std::byte* mutableBytes() { return const_cast<std::byte*>(m_bytes.get()); }
    /// The interleaved samples of an int16 or float32 buffer.
    template <typename Sample>
    const Sample* samples() const {
        assert(int(sizeof(Sample)) == m_format.bytesPerSample());
        return reinterpret_cast<const Sample*>(bytes());
    }
    template <typename Sample>
    Sample* mutableSamples() {
        return const_cast<Sample*>(samples<Sample>());
    }

    /// Some of its frames, shared.
    AudioBuffer part(std::int64_t firstFrame, std::int64_t frameCount) const;

private:
    AudioFormat m_format;
    std::int64_t m_frameCount = 0;
    MediaTime m_time = MediaTime::zero();
    std::shared_ptr<const std::byte> m_bytes;
};

/// The first sample that is not before `time`; the farthest one for a time that is not numeric.
std::int64_t firstSampleAt(MediaTime time, int sampleRate);

} // namespace keldra
