#include "recording/ScreenRecorder.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "base/Log.h"
#include "recording/CapturePath.h"
#include "recording/ClickMix.h"
#include "recording/DisplayPlan.h"
#include "recording/RecordingPath.h"
#include "recording/ScreenRecorderError.h"
#include "recording/StreamPlan.h"

namespace keldra {
namespace {

Duration frameInterval(const RecordingRequest& request) {
    return Duration(std::chrono::seconds(1)) / framesPerSecond(request.quality);
}

VideoTrackSettings videoSettings(RecordingQuality quality, PixelRect size) {
    VideoTrackSettings video;
    video.width = size.width;
    video.height = size.height;
    video.averageBitRate = averageBitRate(quality, video.width, video.height);
    video.expectedFrameRate = framesPerSecond(quality);
    video.maximumKeyFrameInterval = video.expectedFrameRate * 2;
    return video;
}

StreamConfiguration streamConfiguration(const StreamPlan& plan, const RecordingRequest& request) {
    StreamConfiguration configuration;
    configuration.source = plan.source;
    configuration.width = plan.captureSize.width;
    configuration.height = plan.captureSize.height;
    configuration.minimumFrameInterval = frameInterval(request);
    return configuration;
}

OverlaySources overlaysOf(const RecordingRequest& request) {
    OverlaySources overlays;
    overlays.pointerEffects = request.pointerEffectsMonitor;
    overlays.cameraOverlay = request.cameraOverlayState;
    if (request.cameraService)
        overlays.latestCameraFrame = [camera = request.cameraService] { return camera->latestFrame(); };
    return overlays;
}

} // namespace

ScreenRecorder::ScreenRecorder(Platform platform, MovieWriterFactory makeWriter, Executor& captureQueue,
                               Executor& mainQueue)
    : m_platform(std::move(platform))
    , m_makeWriter(std::move(makeWriter))
    , m_captureQueue(captureQueue)
    , m_mainQueue(mainQueue) {}

ScreenRecorder::~ScreenRecorder() = default;

QCoro::Task<Result<void>> ScreenRecorder::startRecording(RecordingRequest request, OnFinish onFinish) {
    CO_TRY_LET(const QString path, makeOutputPath(request.outputDirectory, request.now));
    CO_TRY(checkRoomToRecord(request.outputDirectory));
    ++m_attempt;
    m_completion = std::move(onFinish);
    m_pointerEffects = request.pointerEffectsMonitor;
    m_clickTimes.reset();
    m_clickSoundStyle = request.clickSoundStyle;
    m_wroteClicksLive = false;

    const std::weak_ptr<bool> alive = m_isAlive;
    const auto monitor = m_pointerEffects;
    const bool streams = capturePathOf(m_platform) == CapturePath::stream;
    const bool writesClicksLive = streams && request.clickSoundEnabled;
    Result<void> started;
    if (streams)
        started = co_await startStream(std::move(request), path);
    else
        started = co_await startDisplayCapture(std::move(request), path);
    if (alive.expired())
        co_return started;
    if (!started) {
        co_await abortRecording();
        co_return started;
    }
    m_wroteClicksLive = writesClicksLive;
    // A recording that failed already has taken its times.
    if (monitor && m_session)
        monitor->beginClickCapture();
    co_return started;
}

QCoro::Task<Result<void>> ScreenRecorder::startStream(RecordingRequest request, QString path) {
    const std::weak_ptr<bool> alive = m_isAlive;
    const Error gone = makeError(ScreenRecorderError::couldNotPrepareStream);
    const Result<ShareableContentSnapshot> content = co_await awaitCompletion<ShareableContentSnapshot>(
        [this](auto done) { m_platform.shareableContent->current(std::move(done)); });
    if (alive.expired())
        co_return fail(gone);
    CO_TRY(content);
    if (!m_platform.makeScreenStream)
        co_return fail(gone);

    CO_TRY_LET(const StreamPlan plan, planStream(*content, m_platform.screens->screens(), request.selection));
    const auto source = FrameSource::of(m_platform.makeScreenStream(), streamConfiguration(plan, request));
    CO_TRY_LET(m_session, makeSession(source, plan.outputSize, request, path));
    const auto session = m_session;
    if (const auto microphone = microphoneFor(request)) {
        CO_TRY(co_await addMicrophone(session, microphone->id, request.microphoneEnabled));
        if (alive.expired())
            co_return fail(gone);
    }
    if (request.clickSoundEnabled)
        session->addClicks(request.clickSoundStyle);
    co_return co_await awaitCompletion<void>([&](auto done) { session->start(std::move(done)); });
}

QCoro::Task<Result<void>> ScreenRecorder::startDisplayCapture(RecordingRequest request, QString path) {
    const std::weak_ptr<bool> alive = m_isAlive;
    DisplayCaptureConfiguration configuration;
    std::shared_ptr<DisplayCapture> capture;
    if (m_platform.pickDisplay) {
        configuration.minimumFrameInterval = frameInterval(request);
        m_isAskingUser = true;
        const Result<PickedDisplay> picked = co_await awaitCompletion<PickedDisplay>(
            [&](auto done) { m_platform.pickDisplay(configuration, std::move(done)); });
        if (alive.expired())
            co_return fail(makeError(ScreenRecorderError::couldNotPrepareStream));
        m_isAskingUser = false;
        CO_TRY(picked);
        capture = picked->capture;
        configuration.crop = picked->whole;
    } else {
        CO_TRY_LET(configuration, planDisplayCapture(m_platform.screens->screens(), request.selection));
        configuration.minimumFrameInterval = frameInterval(request);
        if (m_platform.makeDisplayCapture)
            capture = m_platform.makeDisplayCapture();
    }
    if (!capture)
        co_return fail(makeError(ScreenRecorderError::couldNotAddScreenInput));

    RecordingRequest plain = request;
    // The capture cuts, and what lies over the screen is captured with it.
    plain.selection = DisplaySelection{configuration.displayID, {}};
    plain.cameraService = nullptr;
    plain.cameraOverlayState = nullptr;
    plain.pointerEffectsMonitor = nullptr;
    plain.offersMicrophone = false;
    CO_TRY_LET(m_session, makeSession(FrameSource::of(capture, configuration), configuration.crop, plain, path));
    const auto session = m_session;
    if (request.microphoneEnabled) {
        const auto microphone = microphoneFor(plain);
        if (!microphone)
            co_return fail(makeError(ScreenRecorderError::couldNotAddMicrophoneInput));
        CO_TRY(co_await addMicrophone(session, microphone->id, true));
        if (alive.expired())
            co_return fail(makeError(ScreenRecorderError::couldNotPrepareStream));
        if (!session->hasMicrophone())
            co_return fail(makeError(ScreenRecorderError::couldNotAddMicrophoneInput));
    }
    co_return co_await awaitCompletion<void>([&](auto done) { session->start(std::move(done)); });
}

Result<std::shared_ptr<StreamRecordingSession>> ScreenRecorder::makeSession(FrameSource source, PixelRect outputSize,
                                                                            const RecordingRequest& request,
                                                                            const QString& path) {
    StreamRecordingSession::Parts parts;
    TRY_LET(parts.writer, m_makeWriter(path.toStdString()));
    TRY_LET(const auto videoInput, parts.writer->addVideoInput(videoSettings(request.quality, outputSize)));
    parts.videoInput = &videoInput.get();
    parts.source = std::move(source);
    parts.selection = request.selection;
    parts.outputWidth = outputSize.width;
    parts.outputHeight = outputSize.height;
    parts.screens = m_platform.screens;
    parts.windows = m_platform.windows;
    parts.clock = m_platform.clock;
    parts.overlays = overlaysOf(request);
    parts.queue = &m_captureQueue;
    parts.mainQueue = &m_mainQueue;
    parts.recoveryDirectory =
        (request.recoveryDirectory.isEmpty() ? recordingRecoveryDirectory() : request.recoveryDirectory).toStdString();
    parts.onFirstFrame = request.onFirstFrame;
    parts.onFinish = [this, alive = std::weak_ptr<bool>(m_isAlive), attempt = m_attempt,
                      url = QUrl::fromLocalFile(path)](const Result<RecordingEnding>& result) {
        if (!alive.expired() && m_attempt == attempt)
            deliver(result.map([&](RecordingEnding ending) { return RecordingOutput{url, false, ending}; }));
    };
    return std::make_shared<StreamRecordingSession>(std::move(parts));
}

std::optional<CaptureDeviceOption> ScreenRecorder::microphoneFor(const RecordingRequest& request) const {
    constexpr auto kind = CaptureDeviceKind::microphone;
    const auto& devices = m_platform.devices;
    if (!devices || !m_platform.makeMicrophoneStream || !(request.microphoneEnabled || request.offersMicrophone) ||
        devices->authorization(kind) != CaptureAuthorization::authorized)
        return std::nullopt;
    return chooseDevice(devices->devices(kind), request.microphoneDeviceID, devices->defaultDeviceID(kind));
}

QCoro::Task<Result<void>> ScreenRecorder::addMicrophone(std::shared_ptr<StreamRecordingSession> session,
                                                        QString deviceID, bool isEnabled) {
    session->setMicrophoneEnabled(isEnabled);
    auto microphone = m_platform.makeMicrophoneStream();
    co_return co_await awaitCompletion<void>(
        [&](auto done) { session->addMicrophone(std::move(microphone), deviceID, std::move(done)); });
}

bool ScreenRecorder::setMicrophoneEnabled(bool isEnabled) {
    if (!m_session || !m_session->hasMicrophone())
        return false;
    m_session->setMicrophoneEnabled(isEnabled);
    return true;
}

void ScreenRecorder::stopRecording() {
    if (!m_session)
        return;
    takeClickTimes();
    m_session->stop([this, alive = std::weak_ptr<bool>(m_isAlive)](const Result<void>& stopped) {
        if (!stopped && !alive.expired())
            deliver(fail(stopped.error()));
    });
}

void ScreenRecorder::takeClickTimes() {
    if (!m_clickTimes)
        m_clickTimes = m_pointerEffects ? m_pointerEffects->takeCapturedClickTimes() : std::vector<double>();
}

void ScreenRecorder::deliver(Result<RecordingOutput> result) {
    takeClickTimes();
    m_session.reset();
    m_pointerEffects.reset();
    const std::vector<double> times = m_clickTimes.value_or(std::vector<double>());
    m_clickTimes.reset();
    // The first delivery wins; a second finds nobody to tell.
    OnFinish completion = std::exchange(m_completion, nullptr);
    if (!completion)
        return;
    if (result)
        result->hasLiveClickTrack = m_wroteClicksLive;
    if (result && !m_wroteClicksLive && !times.empty())
        mixClicks(*result, times, std::move(completion));
    else
        completion(std::move(result));
}

/// A mix that fails leaves the recording as it is, without its clicks.
void ScreenRecorder::mixClicks(RecordingOutput output, std::vector<double> times, OnFinish completion) {
    m_captureQueue.post([output = std::move(output), times = std::move(times), style = m_clickSoundStyle,
                         &mainQueue = m_mainQueue, completion = std::move(completion)]() mutable {
        const std::string path = output.url.toLocalFile().toStdString();
        if (const Result<void> mixed = mixClicksIntoMovie(path, times, style); !mixed)
            logFailure("mixing clicks into a recording", mixed.error());
        mainQueue.post([output = std::move(output), completion = std::move(completion)] { completion(output); });
    });
}

QCoro::Task<> ScreenRecorder::abortRecording() {
    ++m_attempt;
    takeClickTimes();
    m_completion = nullptr;
    m_pointerEffects.reset();
    m_clickTimes.reset();
    if (const auto session = std::exchange(m_session, nullptr))
        // What could not start may well fail to stop; the start's error is the one to tell.
        (void)co_await awaitCompletion<void>([&](auto done) { session->stop(std::move(done)); });
}

std::int64_t ScreenRecorder::writtenFrameCount() const {
    return m_session ? m_session->writtenFrameCount() : 0;
}

std::int64_t ScreenRecorder::droppedFrameCount() const {
    return m_session ? m_session->droppedFrameCount() : 0;
}

} // namespace keldra
