#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "media/MovieWriter.h"
#include "platform/Platform.h"
#include "recording/RecordingOutput.h"
#include "recording/RecordingQuality.h"
#include "recording/StreamPlan.h"
#include "recording/StreamRecordingSession.h"

#include <QCoroTask>
#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>

namespace keldra {

/// What to record, how, and to where.
struct RecordingRequest {
    CaptureSelection selection;
    RecordingQuality quality = RecordingQuality::high;
    QString outputDirectory;
    /// The moment that names the file.
    QDateTime now;
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

    std::int64_t writtenFrameCount() const;
    std::int64_t droppedFrameCount() const;

private:
    QCoro::Task<Result<void>> startStream(RecordingRequest request, QString path);
    Result<std::shared_ptr<StreamRecordingSession>> makeSession(const StreamPlan& plan, RecordingRequest request,
                                                                const QString& path);
    void deliver(Result<RecordingOutput> result);
    QCoro::Task<> abortRecording();

    Platform m_platform;
    MovieWriterFactory m_makeWriter;
    Executor& m_captureQueue;
    Executor& m_mainQueue;
    OnFinish m_completion;
    std::shared_ptr<StreamRecordingSession> m_streamSession;
    /// Watched by what returns after a wait.
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
};

} // namespace keldra
