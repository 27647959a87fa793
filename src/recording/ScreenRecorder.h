#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "media/MovieWriter.h"
#include "platform/Platform.h"
#include "recording/CameraOverlayState.h"
#include "recording/CameraService.h"
#include "recording/ClickSoundStyle.h"
#include "recording/PointerEffectsMonitor.h"
#include "recording/RecordingOutput.h"
#include "recording/RecordingQuality.h"
#include "recording/StreamRecordingSession.h"

#include <QCoroTask>
#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace keldra {

/// What to record, how, and to where.
struct RecordingRequest {
    CaptureSelection selection;
    RecordingQuality quality = RecordingQuality::high;
    /// Whether the microphone is heard from the start.
    bool microphoneEnabled = false;
    /// Empty or unknown: the desktop's choice.
    QString microphoneDeviceID;
    /// Whether a microphone that is off gets a track too, so that it can be switched on in mid-recording.
    bool offersMicrophone = true;
    bool clickSoundEnabled = false;
    ClickSoundStyle clickSoundStyle = ClickSoundStyle::soft;
    QString outputDirectory;
    /// Where a recording that fails is kept; empty: the user's own place for that.
    QString recoveryDirectory;
    /// The moment that names the file.
    QDateTime now;
    /// What lies over the frames; each may be missing.
    std::shared_ptr<CameraService> cameraService;
    std::shared_ptr<CameraOverlayState> cameraOverlayState;
    std::shared_ptr<PointerEffectsMonitor> pointerEffectsMonitor;
    /// Runs on main when the first frame is in the file.
    std::function<void()> onFirstFrame;
};

/// The one recording service: turns a selection into a movie file. One recording at a time.
///
/// Threads: main, but for the capture queue it is given, on which frames run.
class ScreenRecorder {
public:
    using OnFinish = std::function<void(Result<RecordingOutput>)>;

    /// `captureQueue` and `mainQueue` must outlive the recorder.
    ScreenRecorder(Platform platform, MovieWriterFactory makeWriter, Executor& captureQueue, Executor& mainQueue);
    ~ScreenRecorder();

    /// `onFinish` runs once, on main, when the recording has ended; never after a start that failed.
    QCoro::Task<Result<void>> startRecording(RecordingRequest request, OnFinish onFinish);
    /// Ends the recording; the end is told through `onFinish`.
    void stopRecording();
    /// False when there is no microphone to switch.
    bool setMicrophoneEnabled(bool isEnabled);

    /// A start waits for what the desktop's user picks; it has no file yet.
    bool isAskingUser() const { return m_isAskingUser; }
    std::int64_t writtenFrameCount() const;
    std::int64_t droppedFrameCount() const;

private:
    QCoro::Task<Result<void>> startStream(RecordingRequest request, QString path);
    QCoro::Task<Result<void>> startDisplayCapture(RecordingRequest request, QString path);
    Result<std::shared_ptr<StreamRecordingSession>> makeSession(FrameSource source, PixelRect outputSize,
                                                                const RecordingRequest& request, const QString& path);
    /// The microphone that a request means; nothing when there is none, or none is allowed.
    std::optional<CaptureDeviceOption> microphoneFor(const RecordingRequest& request) const;
    QCoro::Task<Result<void>> addMicrophone(std::shared_ptr<StreamRecordingSession> session, QString deviceID,
                                            bool isEnabled);
    void takeClickTimes();
    void deliver(Result<RecordingOutput> result);
    void mixClicks(RecordingOutput output, std::vector<double> times, OnFinish completion);
    QCoro::Task<> abortRecording();

    Platform m_platform;
    MovieWriterFactory m_makeWriter;
    Executor& m_captureQueue;
    Executor& m_mainQueue;
    OnFinish m_completion;
    /// Counts starts and what ends them early, so that nobody takes the result of an earlier one for the latest's.
    int m_attempt = 0;
    bool m_isAskingUser = false;
    std::shared_ptr<StreamRecordingSession> m_session;
    std::shared_ptr<PointerEffectsMonitor> m_pointerEffects;
    /// Nothing until they are taken from the monitor.
    std::optional<std::vector<double>> m_clickTimes;
    ClickSoundStyle m_clickSoundStyle = ClickSoundStyle::soft;
    bool m_wroteClicksLive = false;
    /// Watched by what returns after a wait.
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
};

} // namespace keldra
