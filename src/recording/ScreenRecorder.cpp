#include "recording/ScreenRecorder.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "recording/RecordingPath.h"
#include "recording/ScreenRecorderError.h"

namespace keldra {

ScreenRecorder::ScreenRecorder(Platform platform, MovieWriterFactory makeWriter, Executor& captureQueue,
                               Executor& mainQueue)
    : m_platform(std::move(platform))
    , m_makeWriter(std::move(makeWriter))
    , m_captureQueue(captureQueue)
    , m_mainQueue(mainQueue) {}

ScreenRecorder::~ScreenRecorder() = default;

QCoro::Task<Result<void>> ScreenRecorder::startRecording(RecordingRequest request, OnFinish onFinish) {
    CO_TRY_LET(const QString path, makeOutputPath(request.outputDirectory, request.now));
    m_completion = std::move(onFinish);

    const std::weak_ptr<bool> alive = m_isAlive;
    Result<void> started = co_await startStream(std::move(request), path);
    if (!started && !alive.expired())
        co_await abortRecording();
    co_return started;
}

QCoro::Task<Result<void>> ScreenRecorder::startStream(RecordingRequest request, QString path) {
    const std::weak_ptr<bool> alive = m_isAlive;
    Result<ShareableContentSnapshot> content = co_await awaitCompletion<ShareableContentSnapshot>(
        [this](auto done) { m_platform.shareableContent->current(std::move(done)); });
    if (alive.expired())
        co_return fail(makeError(ScreenRecorderError::couldNotPrepareStream));
    CO_TRY(content);

    CO_TRY_LET(const StreamPlan plan, planStream(*content, m_platform.screens->screens(), request.selection));
    CO_TRY_LET(m_streamSession, makeSession(plan, std::move(request), path));
    const auto session = m_streamSession;
    co_return co_await awaitCompletion<void>([&](auto done) { session->start(std::move(done)); });
}

Result<std::shared_ptr<StreamRecordingSession>>
ScreenRecorder::makeSession(const StreamPlan& plan, RecordingRequest request, const QString& path) {
    StreamRecordingSession::Parts parts;
    TRY_LET(parts.writer, m_makeWriter(path.toStdString()));
    VideoTrackSettings video;
    video.width = plan.outputSize.width;
    video.height = plan.outputSize.height;
    video.averageBitRate = averageBitRate(request.quality, video.width, video.height);
    video.expectedFrameRate = framesPerSecond(request.quality);
    video.maximumKeyFrameInterval = video.expectedFrameRate * 2;
    TRY_LET(const auto videoInput, parts.writer->addVideoInput(video));
    parts.videoInput = &videoInput.get();

    parts.stream = m_platform.makeScreenStream();
    parts.configuration.source = plan.source;
    parts.configuration.width = plan.captureSize.width;
    parts.configuration.height = plan.captureSize.height;
    parts.configuration.minimumFrameInterval = Duration(std::chrono::seconds(1)) / framesPerSecond(request.quality);
    parts.selection = request.selection;
    parts.outputWidth = video.width;
    parts.outputHeight = video.height;
    parts.screens = m_platform.screens;
    parts.clock = m_platform.clock;
    parts.queue = &m_captureQueue;
    parts.mainQueue = &m_mainQueue;
    parts.onFirstFrame = std::move(request.onFirstFrame);
    parts.onFinish = [this, alive = std::weak_ptr<bool>(m_isAlive),
                      url = QUrl::fromLocalFile(path)](const auto& result) {
        if (!alive.expired())
            deliver(result.map([&] { return RecordingOutput{url, false}; }));
    };
    return std::make_shared<StreamRecordingSession>(std::move(parts));
}

void ScreenRecorder::stopRecording() {
    if (!m_streamSession)
        return;
    m_streamSession->stop([this, alive = std::weak_ptr<bool>(m_isAlive)](const Result<void>& stopped) {
        if (!stopped && !alive.expired())
            deliver(fail(stopped.error()));
    });
}

void ScreenRecorder::deliver(Result<RecordingOutput> result) {
    m_streamSession.reset();
    // The first delivery wins; a second finds nobody to tell.
    if (const OnFinish completion = std::exchange(m_completion, nullptr))
        completion(std::move(result));
}

QCoro::Task<> ScreenRecorder::abortRecording() {
    m_completion = nullptr;
    if (const auto session = std::exchange(m_streamSession, nullptr))
        // What could not start may well fail to stop; the start's error is the one to tell.
        (void)co_await awaitCompletion<void>([&](auto done) { session->stop(std::move(done)); });
}

std::int64_t ScreenRecorder::writtenFrameCount() const {
    return m_streamSession ? m_streamSession->writtenFrameCount() : 0;
}

std::int64_t ScreenRecorder::droppedFrameCount() const {
    return m_streamSession ? m_streamSession->droppedFrameCount() : 0;
}

} // namespace keldra
