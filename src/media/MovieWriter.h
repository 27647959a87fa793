#pragma once

#include "base/Executor.h"
#include "base/MediaTime.h"
#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/AudioBuffer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace keldra {

/// How a video track is encoded.
struct VideoTrackSettings {
    /// Even.
    int width = 0;
    int height = 0;
    /// Bits per second.
    std::int64_t averageBitRate = 0;
    int expectedFrameRate = 0;
    /// In frames; a key frame also stands at least every second of time.
    int maximumKeyFrameInterval = 0;
};

/// One track of a movie that is being written. One thread (the writer's owner).
class MovieWriterInput {
public:
    virtual ~MovieWriterInput() = default;
    /// False while the writer is behind; who appends all the same is refused.
    virtual bool isReadyForMoreMediaData() const = 0;
    virtual void markAsFinished() = 0;
};

class MovieWriterVideoInput : public MovieWriterInput {
public:
    /// Hands on a BGRA picture of the track's size; times rise strictly. False when refused or after a failure; the
    /// writer's error tells which.
    virtual bool append(PixelBuffer picture, MediaTime time) = 0;
};

class MovieWriterAudioInput : public MovieWriterInput {
public:
    /// Hands on sound of the track's format. It stands at its own time: what overlaps earlier sound or begins before
    /// the session is trimmed, what is missing before it becomes silence. False as above.
    virtual bool append(const AudioBuffer& sound) = 0;
};

/// Why a recording should not go on.
enum class MovieWriterTrouble {
    failed,         ///< the writer's error says why
    diskNearlyFull, ///< what was appended can still be finished
};

/// A movie file that grows while it is recorded.
///
/// Threads: all calls on one thread, which never waits for the disk or the encoder.
/// Time:    samples carry host-clock times; the session's start becomes the file's zero.
class MovieWriter {
public:
    virtual ~MovieWriter() = default;

    /// Before startWriting(). The reference lives as long as the writer.
    [[nodiscard]] virtual Result<std::reference_wrapper<MovieWriterVideoInput>>
    addVideoInput(const VideoTrackSettings& settings) = 0;
    /// The same for a track of plain PCM, stored as it is.
    [[nodiscard]] virtual Result<std::reference_wrapper<MovieWriterAudioInput>>
    addAudioInput(const AudioFormat& format) = 0;
    /// Before startWriting(): `tell` runs on `answer` when there is trouble, also when nothing is appended.
    virtual void setOnTrouble(Executor& answer, std::function<void(MovieWriterTrouble)> tell) = 0;
    /// Finds out how finely this machine encodes in time: blocks for up to 200 ms. Before startWriting(), on any thread
    /// that may wait; without it the plainest way is taken.
    virtual void prepare() = 0;
    /// Opens the file. Errors: the name exists, the folder is gone or full, no encoder.
    [[nodiscard]] virtual Result<void> startWriting() = 0;
    virtual void startSession(MediaTime time) = 0;
    /// Ends every track, lengthens the last picture up to `end`, and makes the file an ordinary movie. The answer
    /// carries the writer's error, if it has one.
    virtual void finishWriting(MediaTime end, Executor& answer, Completion<void> done) = 0;
    /// Ends a recording that cannot be finished; also after a finish that failed. Its name becomes free, and what was
    /// appended before any failure is kept as a movie in `recoveryFolder` or, where that is on another disk, under a
    /// hidden name beside. The answer is where; empty when there was not one picture to keep.
    virtual void giveUp(const std::string& recoveryFolder, Executor& answer, std::function<void(std::string)> done) = 0;
    /// What made the writer fail, once it has.
    virtual std::optional<Error> error() const = 0;
};

/// Makes the writer of the file at `path`; nothing is opened yet.
using MovieWriterFactory = std::function<Result<std::unique_ptr<MovieWriter>>(const std::string& path)>;

} // namespace keldra
