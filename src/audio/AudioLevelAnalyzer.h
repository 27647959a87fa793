#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "base/SerialQueue.h"

#include <atomic>
#include <optional>
#include <string>

namespace keldra {

/// How loud a span of sound is, over all samples of all its channels alike; 0 when there was none.
struct AudioLevels {
    /// The largest absolute value, at most 1.
    double peak = 0;
    /// The root of the mean square.
    double rms = 0;

    friend bool operator==(const AudioLevels&, const AudioLevels&) = default;
};

enum class AnalyzerError { noAudioTrack = 1, couldNotReadAudio };

/// Without words: who asks takes either for no result.
Error makeError(AnalyzerError code);

/// Measures how loud a span of a media file is. One measurement at a time, on a queue of its own. Any thread.
class AudioLevelAnalyzer {
public:
    AudioLevelAnalyzer() = default;
    /// Gives up what is under way; `done` still runs, with couldNotReadAudio.
    ~AudioLevelAnalyzer() { m_isClosing = true; }

    /// The file's first audio track from `start` on (seconds, zero for what is less) for `duration` seconds; all of
    /// it when that is not more than zero. `done` runs on `answer`.
    /// Errors: AnalyzerError; why the file could not be opened.
    void measure(const std::string& path, double start, double duration, Executor& answer,
                 Completion<AudioLevels> done);

    /// What brings the sound to an RMS of 0.1 with a peak of at most 0.891, between 0.05 and 2. Nothing for silence.
    static std::optional<double> normalizationGain(double peak, double rms);

private:
    [[nodiscard]] Result<AudioLevels> measureNow(const std::string& path, double start, double duration) const;

    std::atomic<bool> m_isClosing = false;
    SerialQueue m_queue{"KELDRA.AudioLevels"};
};

} // namespace keldra
