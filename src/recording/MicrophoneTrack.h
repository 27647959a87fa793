#pragma once

#include "media/MovieWriter.h"

#include <optional>

namespace keldra {

/// Keeps the microphone's track on the host clock: every buffer stands at its own time, and any hole before it is
/// filled with silence. A hole is filled whole or, while the writer is behind, left for the next buffer or the end.
/// Used on the recording's queue.
class MicrophoneTrack {
public:
    explicit MicrophoneTrack(MovieWriterAudioInput& input) : m_input(input) {}

    /// A buffer that is not to be heard is written as silence, so that the track goes on. False when the writer refused
    /// what it had been ready for.
    [[nodiscard]] bool handle(const AudioBuffer& buffer, bool isHeard);
    /// Lengthens the track up to that host time, where it ends before. False as above.
    [[nodiscard]] bool finish(MediaTime lastPicture);
    void markAsFinished() { m_input.markAsFinished(); }

private:
    [[nodiscard]] bool backfill(MediaTime from, MediaTime to);

    MovieWriterAudioInput& m_input;
    std::optional<AudioFormat> m_format;
    /// Where the last buffer ended.
    MediaTime m_nextExpected;
};

} // namespace keldra
