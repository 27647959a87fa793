#pragma once

#include "audio/EditorWaveform.h"
#include "base/Executor.h"
#include "base/Result.h"
#include "base/SerialQueue.h"

#include <atomic>
#include <optional>
#include <string>

namespace keldra {

/// Reduces a media file's sound, all its tracks mixed into one, to heights for the timeline. One file at a time, on a
/// queue of its own; of a long file the second half is read on another one meanwhile. Any thread.
class EditorWaveformGenerator {
public:
    EditorWaveformGenerator() = default;
    /// Gives up what is under way; `done` still runs, with an error.
    ~EditorWaveformGenerator() { m_isClosing = true; }

    /// `duration`: the seconds over which the buckets are spread. Without a count there are 120 a second, but at least
    /// 2400 and at most 12000. A file without sound, or a duration that is not more than zero, gives the empty
    /// waveform. `done` runs on `answer`.
    /// Errors: the file cannot be opened or read on.
    void generate(const std::string& path, std::optional<int> bucketCount, double duration, Executor& answer,
                  Completion<EditorWaveform> done);

private:
    [[nodiscard]] Result<EditorWaveform> generateNow(const std::string& path, std::optional<int> bucketCount,
                                                     double duration);

    std::atomic<bool> m_isClosing = false;
    SerialQueue m_secondQueue{"KELDRA.Waveform.2"};
    SerialQueue m_queue{"KELDRA.Waveform"};
};

} // namespace keldra
