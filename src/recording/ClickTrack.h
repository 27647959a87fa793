#pragma once

#include "media/MovieWriter.h"
#include "recording/ClickAudioChunkMixer.h"

#include <cstdint>
#include <vector>

namespace keldra {

/// Writes the clicks of a recording as a sound track that has no holes, chunk by chunk behind the clock. A chunk's
/// place is counted from the start, never added up, so the track cannot drift. Used on the recording's queue.
class ClickTrack {
public:
    /// 16 ms.
    static constexpr int chunkLength = 768;
    static AudioFormat format() { return {SampleKind::float32, ClickAudioChunkMixer::sampleRate, 1}; }

    explicit ClickTrack(MovieWriterAudioInput& input) : m_input(input) {}

    /// Before begin(). Without it nothing is written.
    void setWaveform(std::vector<float> waveform) { m_waveform = std::move(waveform); }
    /// `start` is the host time of the track's first sample.
    void begin(MediaTime start) { m_start = start; }
    /// A click at that host time, in seconds. One that comes too late for the chunks that are written sounds at once;
    /// one before begin() never.
    void enqueue(double hostSeconds);
    /// Writes all chunks that begin before that host time, as far as the input is ready. False when it refused one.
    [[nodiscard]] bool writeUpTo(MediaTime time);
    void markAsFinished() { m_input.markAsFinished(); }

private:
    std::int64_t sampleAt(double hostSeconds) const;

    MovieWriterAudioInput& m_input;
    std::vector<float> m_waveform;
    MediaTime m_start;
    std::int64_t m_nextSample = 0;
    std::vector<PendingClick> m_pending;
};

} // namespace keldra
