#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "media/AudioMix.h"
#include "media/Composition.h"
#include "media/EncoderChoice.h"
#include "media/VideoComposition.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace keldra {

/// Renders a whole composition into an MP4 file, index at the head: H.264 (libx264 veryfast, crf 18), BT.709 limited,
/// and AAC (192 kb/s stereo, 48 kHz), as long as the composition. What the composition does not hold gets no track;
/// sound alone is a movie too. Reading, composing, mixing and encoding overlap, each on its own thread, with a few
/// frames and a few seconds of sound between them.
///
/// Threads: made, started and cancelled on one thread (`answer`'s); status and progress from any.
/// Errors:  the codec's or the system's own words. A failed or cancelled export removes its partial file.
class ExportSession {
public:
    enum class Status { unknown, waiting, exporting, completed, failed, cancelled };

    ExportSession(std::shared_ptr<const Composition> composition, std::optional<VideoComposition> videoComposition,
                  std::optional<AudioMix> audioMix = std::nullopt);
    /// Cancels, and waits for its threads.
    ~ExportSession();

    /// Who encodes; before start(). libx264 unless told otherwise.
    void setEncoder(EncoderChoice encoder) { m_encoder = encoder; }
    /// Writes to `path`, which must not exist. `done` runs once, on `answer`; a cancel answers with an error too, see
    /// status().
    void start(const std::string& path, Executor& answer, Completion<void> done);
    void cancel();

    Status status() const { return m_status; }
    /// 0 to 1.
    float progress() const { return m_progress; }

private:
    class Run;
    std::shared_ptr<const Composition> m_composition;
    std::optional<VideoComposition> m_videoComposition;
    std::optional<AudioMix> m_audioMix;
    EncoderChoice m_encoder = EncoderChoice::x264;
    std::atomic<Status> m_status = Status::unknown;
    std::atomic<float> m_progress = 0;
    std::unique_ptr<Run> m_run;
};

} // namespace keldra
