#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "imaging/PixelBufferPool.h"
#include "media/MovieWriter.h"
#include "platform/CaptureSelection.h"
#include "platform/ScreenStream.h"
#include "platform/Screens.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// One recording from a screen stream into a movie file: starts the file at the first frame, crops, stamps and appends
/// each frame, and finishes the file. Used once.
///
/// Threads: start() and stop() on main; frames and the finish on `queue`; completions and `onFinish` on main.
/// Time:    frames carry host-clock times, and the first one's is the file's zero.
class StreamRecordingSession : public std::enable_shared_from_this<StreamRecordingSession> {
public:
    struct Parts {
        std::unique_ptr<ScreenStream> stream;
        StreamConfiguration configuration;
        std::unique_ptr<MovieWriter> writer;
        MovieWriterVideoInput* videoInput = nullptr;
        CaptureSelection selection;
        /// Pixels of the movie.
        int outputWidth = 0;
        int outputHeight = 0;
        std::shared_ptr<Screens> screens;
        std::shared_ptr<HostClock> clock;
        Executor* queue = nullptr;
        Executor* mainQueue = nullptr;
        /// The first frame was written; at most once.
        std::function<void()> onFirstFrame;
        /// The file is finished, or why it is not; exactly once after a start.
        Completion<void> onFinish;
    };

    explicit StreamRecordingSession(Parts parts);

    void start(Completion<void> done);
    /// Ends the stream, then finishes the file; the last picture lasts up to this call.
    void stop(Completion<void> done);

    /// How many frames were written, and how many came while the encoder was behind. Any thread.
    std::int64_t writtenFrameCount() const { return m_writtenFrameCount; }
    std::int64_t droppedFrameCount() const { return m_droppedFrameCount; }

private:
    void handleFrame(ScreenFrame frame);
    bool startWriting(MediaTime time);
    MediaTime stamp(MediaTime time) const;
    PixelBuffer croppedFrame(const PixelBuffer& picture);
    PixelBuffer fittedToOutput(const PixelBuffer& picture, PixelRect crop);
    void requestFinish(std::optional<Error> error, MediaTime end);
    void finish(const std::optional<Error>& error, MediaTime end);
    void complete(Result<void> result);
    void finishIfWriterFailed();

    Parts m_parts;
    PixelBufferPool m_pool;
    bool m_hasStartedWriting = false;
    bool m_hasFinished = false;
    MediaTime m_lastOutputVideoPTS;
    std::atomic<std::int64_t> m_writtenFrameCount = 0;
    std::atomic<std::int64_t> m_droppedFrameCount = 0;
};

} // namespace keldra
