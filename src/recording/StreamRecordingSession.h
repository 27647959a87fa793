#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "imaging/PixelBufferPool.h"
#include "media/MovieWriter.h"
#include "platform/CaptureSelection.h"
#include "platform/MicrophoneStream.h"
#include "platform/Screens.h"
#include "platform/WindowList.h"
#include "recording/CameraOverlayState.h"
#include "recording/ClickSoundStyle.h"
#include "recording/ClickTrack.h"
#include "recording/FrameDecorator.h"
#include "recording/FrameSource.h"
#include "recording/MicrophoneTrack.h"
#include "recording/PointerEffectsMonitor.h"
#include "recording/RecordingOutput.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// What lies over the frames of a recording; each may be missing.
struct OverlaySources {
    std::shared_ptr<PointerEffectsMonitor> pointerEffects;
    std::shared_ptr<CameraOverlayState> cameraOverlay;
    /// The newest picture of the camera; any thread.
    std::function<PixelBuffer()> latestCameraFrame;
};

/// One recording from a screen into a movie file: starts the file at the first frame, crops, decorates, stamps and
/// appends each frame, writes microphone and clicks beside them, and finishes the file. Used once.
///
/// While clicks are drawn the last frame is written again with them, because a still screen gives no new one; while the
/// camera's bubble is seen, thirty times a second.
///
/// Threads: set up, started and stopped on main; frames, sound, ticks and the finish on `queue`; completions and
///          `onFinish` on main.
/// Time:    frames, sound and clicks carry host-clock times, and the first frame's is the file's zero.
class StreamRecordingSession : public std::enable_shared_from_this<StreamRecordingSession> {
public:
    /// Of the pointer's effects, the bubble and the click track.
    static constexpr Duration tickInterval = std::chrono::milliseconds(16);

    struct Parts {
        FrameSource source;
        std::unique_ptr<MovieWriter> writer;
        MovieWriterVideoInput* videoInput = nullptr;
        CaptureSelection selection;
        /// Pixels of the movie.
        int outputWidth = 0;
        int outputHeight = 0;
        std::shared_ptr<Screens> screens;
        std::shared_ptr<WindowList> windows;
        std::shared_ptr<HostClock> clock;
        OverlaySources overlays;
        Executor* queue = nullptr;
        Executor* mainQueue = nullptr;
        /// The first frame was written; at most once.
        std::function<void()> onFirstFrame;
        /// Where the file is kept when the recording fails.
        std::string recoveryDirectory;
        /// The file is finished, or why it is not, with `info` naming what is kept of it ("kept"); exactly once after a
        /// start.
        Completion<RecordingEnding> onFinish;
    };

    explicit StreamRecordingSession(Parts parts);

    /// Before start(): opens the microphone and makes its track, unless the writer refuses one. Errors: the
    /// microphone's own.
    void addMicrophone(std::unique_ptr<MicrophoneStream> microphone, const QString& deviceID, Completion<void> done);
    /// Before start(): makes the click track, unless the writer refuses one.
    void addClicks(ClickSoundStyle style);
    void start(Completion<void> done);
    /// Ends the stream and the microphone, then finishes the file; the last picture and the sound last up to this call.
    void stop(Completion<void> done);

    bool hasMicrophone() const { return m_microphone != nullptr; }
    /// Any thread; from the next buffer on.
    void setMicrophoneEnabled(bool isEnabled) { m_isMicrophoneEnabled = isEnabled; }

    /// How many frames were written, and how many came while the encoder was behind. Any thread.
    std::int64_t writtenFrameCount() const { return m_writtenFrameCount; }
    std::int64_t droppedFrameCount() const { return m_droppedFrameCount; }

private:
    void prepare();
    void startSource(Completion<void> done);
    void handleFrame(ScreenFrame frame);
    void handleSound(const AudioBuffer& sound);
    /// Main. When it answers, all that was heard has come.
    void stopMicrophone(Completion<void> done);
    bool startWriting(MediaTime time);
    MediaTime stamp(MediaTime time) const;
    PixelBuffer croppedFrame(const PixelBuffer& picture);
    PixelBuffer fittedToOutput(const PixelBuffer& picture, PixelRect crop);

    /// A highlight alone redraws nothing, so it need not be placed then.
    FrameOverlays readOverlays(bool isRedraw) const;
    bool append(const PixelBuffer& frame, MediaTime time, bool hasBubble);
    void startTicks();
    void tick();
    void redraw(MediaTime now);

    void requestFinish(std::optional<Error> error, MediaTime end);
    void finish(const std::optional<Error>& error, MediaTime end);
    void padSound();
    void giveUp(Error error);
    void complete(Result<RecordingEnding> result);
    void finishIfWriterFailed();
    void handleTrouble(MovieWriterTrouble trouble);

    Parts m_parts;
    /// The region's display when the recording was set up, desktop points; empty when there is none.
    const QRectF m_displayAtStart;
    std::unique_ptr<MicrophoneStream> m_microphone;
    bool m_isMicrophoneStopped = false;
    std::optional<MicrophoneTrack> m_microphoneTrack;
    std::optional<ClickTrack> m_clickTrack;
    ClickSoundStyle m_clickSoundStyle = ClickSoundStyle::soft;
    std::atomic<bool> m_isMicrophoneEnabled = false;

    // The queue's own.
    PixelBufferPool m_pool;
    FrameDecorator m_decorator;
    Timer m_ticks;
    /// The last frame of the source, cropped and without anything over it.
    PixelBuffer m_latestSourceFrame;
    bool m_hasStartedWriting = false;
    bool m_hasFinished = false;
    /// Sound from here on is not wanted; known once it was asked to stop.
    std::optional<MediaTime> m_soundEnd;
    RecordingEnding m_ending = RecordingEnding::stopped;
    /// The file's zero.
    MediaTime m_begin;
    MediaTime m_lastOutputVideoPTS;
    /// When, and whether with a bubble, the last frame was written.
    MediaTime m_lastAppendedAt;
    bool m_lastHadBubble = false;

    std::atomic<std::int64_t> m_writtenFrameCount = 0;
    std::atomic<std::int64_t> m_droppedFrameCount = 0;
};

} // namespace keldra
