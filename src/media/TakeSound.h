#pragma once

#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/Libav.h"
#include "media/MovieMuxer.h"
#include "media/TakeFile.h"

#include <cstdint>

namespace keldra {

/// One sound track of a take: plain PCM without holes from the file's zero on, because neither an ordinary movie nor
/// its readers keep a hole or a late start. Every frame stands at its own time: what overlaps is trimmed, never
/// shifted, and what is missing is silence.
class TakeSound {
public:
    /// Before the file begins.
    [[nodiscard]] static Result<TakeSound> addTo(TakeFile& file, const AudioFormat& format);

    /// `firstFrame` is where the buffer begins, in frames from the file's zero; it may be before it.
    [[nodiscard]] Result<void> append(const AudioBuffer& buffer, std::int64_t firstFrame);

private:
    TakeSound(TakeFile& file, const AudioFormat& format, int trackIndex)
        : m_file(&file), m_format(format), m_trackIndex(trackIndex) {}
    /// Silence for no bytes.
    [[nodiscard]] Result<void> write(const std::byte* bytes, std::int64_t frameCount);

    TakeFile* m_file;
    AudioFormat m_format;
    int m_trackIndex;
    /// Where the track ends so far.
    std::int64_t m_nextFrame = 0;
};

} // namespace keldra
