#include "media/AudioBuffer.h"

#include "base/Recycling.h"

#include <limits>

namespace keldra {

AudioBuffer AudioBuffer::allocate(const AudioFormat& format, std::int64_t frameCount, MediaTime time) {
    // As kernels like their samples.
    struct alignas(16) Unit {
        std::byte bytes[16];
    };
    const auto count = std::size_t(frameCount) * std::size_t(format.bytesPerFrame());
    const auto units = std::allocate_shared<Unit[]>(Recycling<Unit>(), (count + sizeof(Unit) - 1) / sizeof(Unit));
    return sharing(format, frameCount, time, std::shared_ptr<const std::byte>(units, units[0].bytes));
}

AudioBuffer AudioBuffer::sharing(const AudioFormat& format, std::int64_t frameCount, MediaTime time,
                                 std::shared_ptr<const std::byte> bytes) {
    AudioBuffer buffer;
    buffer.m_format = format;
    buffer.m_frameCount = frameCount;
    buffer.m_time = time;
    buffer.m_bytes = std::move(bytes);
    return buffer;
}

AudioBuffer AudioBuffer::part(std::int64_t firstFrame, std::int64_t frameCount) const {
    assert(firstFrame >= 0 && frameCount >= 0 && firstFrame + frameCount <= m_frameCount);
    AudioBuffer some = *this;
    some.m_frameCount = frameCount;
    some.m_time = m_time + MediaTime(firstFrame, m_format.sampleRate);
    some.m_bytes =
        std::shared_ptr<const std::byte>(m_bytes, m_bytes.get() + firstFrame * std::int64_t(m_format.bytesPerFrame()));
    return some;
}

std::int64_t firstSampleAt(MediaTime time, int sampleRate) {
    __extension__ using Wide = __int128;
    constexpr Wide farthest = std::numeric_limits<std::int64_t>::max();
    if (!time.isNumeric())
        return std::int64_t(farthest);
    const Wide numerator = Wide(time.value()) * sampleRate;
    const Wide denominator = time.timescale();
    // Division cuts towards zero, which already is upwards for what is negative.
    const Wide sample = numerator / denominator + (numerator % denominator > 0);
    return std::int64_t(sample > farthest ? farthest : sample < -farthest ? -farthest : sample);
}

} // namespace keldra
