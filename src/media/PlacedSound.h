#pragma once

#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/SourceSound.h"

#include <cstdint>
#include <memory>
#include <vector>

struct SwrContext;

namespace keldra {

/// A track's sound laid on another time line, in that line's rate and channels (float32). Belongs to one thread at a
/// time.
///
/// What a frame holds follows from its number and the offset alone, not from what was read before: reading on, seeking
/// and cutting give the same samples. Where the rates differ the phase is right to 1/(2 b) of a source sample, where
/// the line's rate is b/a of the source's in lowest terms; where they are equal the sound comes less than a sample
/// late.
class PlacedSound {
public:
    /// `offset` is the time in the file that stands at the line's zero.
    PlacedSound(std::unique_ptr<SourceSound> source, MediaTime offset, const AudioFormat& format);
    ~PlacedSound();

    const SourceSound& source() const { return *m_source; }
    /// Lays the same track elsewhere; its file stays open.
    void setOffset(MediaTime offset);

    /// Writes interleaved frames from the line's frame `first` on.
    [[nodiscard]] Result<void> read(std::int64_t first, std::int64_t count, float* frames);

private:
    [[nodiscard]] Result<void> start(std::int64_t first);
    [[nodiscard]] Result<void> feed();
    bool isOneForOne() const { return m_step == m_steps; }

    struct FreeConversion {
        void operator()(SwrContext* context) const;
    };

    std::unique_ptr<SourceSound> m_source;
    AudioFormat m_format;
    // The line's frame n stands at source sample (m_phase + n * m_step) / m_steps.
    std::int64_t m_step = 1;
    std::int64_t m_steps = 1;
    std::int64_t m_phase = 0;

    std::unique_ptr<SwrContext, FreeConversion> m_conversion;
    std::int64_t m_nextSource = 0;
    std::vector<float> m_input;
    /// What came out and was not read, from frame m_readyFrom on.
    std::vector<float> m_ready;
    std::int64_t m_readyFrom = 0;
    bool m_isStarted = false;
};

} // namespace keldra
