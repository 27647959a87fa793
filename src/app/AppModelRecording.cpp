#include "app/AppModel.h"
#include "async/AwaitCompletion.h"
#include "base/Log.h"

#include <QPointer>

#include <chrono>

namespace keldra {

QCoro::Task<> AppModel::startRecording() {
    if (recordingState() == RecordingState::recording) {
        stopRecording();
        co_return;
    }
    // The state does not tell yet while the camera starts or a permission is asked for.
    if (m_isStarting)
        co_return;
    m_isStarting = true;
    const QPointer<AppModel> alive(this);
    co_await askOrBegin();
    if (alive)
        m_isStarting = false;
}

QCoro::Task<> AppModel::askOrBegin() {
    if (!currentSelection() && recordsDisplaysOnly())
        selectDisplay();
    if (!currentSelection()) {
        setIsSettingsPresented(false);
        setIsSelectionRequiredPresented(true);
        co_return;
    }
    // A grant does not begin by itself: the user presses again.
    if (hasScreenPermission())
        co_await beginRecording();
    else
        co_await requestScreenPermission();
}

QCoro::Task<> AppModel::requestScreenPermission() {
    setRecordingState(RecordingState::requestingPermission);
    setErrorMessage({});
    const QPointer<AppModel> alive(this);
    bool isGranted = true;
    if (const auto permissions = m_parts.platform.permissions) {
        const Result<bool> answer =
            co_await awaitCompletion<bool>([&](auto done) { permissions->requestScreenCapture(std::move(done)); });
        if (!alive)
            co_return;
        isGranted = answer.value_or(false);
    }
    setHasScreenPermission(isGranted);
    refreshDisplays();
    if (isGranted)
        setRecordingState(RecordingState::idle);
    else
        fail(recordsDisplaysOnly()
                 ? QStringLiteral(QT_TRANSLATE_NOOP(
                       "Messages", "This desktop lets no program record the screen: it has no portal for it."))
                 : QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Screen recording access was not granted")));
}

QCoro::Task<> AppModel::beginRecording() {
    const std::optional<CaptureSelection> selection = currentSelection();
    if (!selection) {
        fail(QStringLiteral(QT_TRANSLATE_NOOP("Messages", "No capture selection is active.")));
        co_return;
    }
    const QPointer<AppModel> alive(this);
    if (cameraEnabled()) {
        const QString deviceID = selectedCameraDeviceID();
        const bool isStarted = co_await m_parts.camera->start(deviceID);
        if (!alive)
            co_return;
        if (!isStarted)
            refuseCamera(); // and record without it
    }
    const bool isGranted = co_await requestAudioPermissionIfNeeded(microphoneEnabled());
    if (!alive)
        co_return;
    if (microphoneEnabled() && !isGranted) {
        fail(QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Microphone access was not granted.")));
        co_return;
    }
    updateMicrophoneMonitor();
    setErrorMessage({});
    setLastSavedURL({});
    setElapsedSeconds(0);
    setRecordingState(RecordingState::countdown);
    if (const auto countdown = m_windows.runCountdown) {
        co_await countdown();
        if (!alive)
            co_return;
    }
    co_await runRecorder(*selection);
}

QCoro::Task<> AppModel::runRecorder(CaptureSelection selection) {
    // What the user changed during the countdown counts.
    RecordingRequest request;
    request.selection = std::move(selection);
    request.quality = recordingQuality();
    request.microphoneEnabled = microphoneEnabled();
    request.microphoneDeviceID = selectedMicrophoneDeviceID();
    request.clickSoundEnabled = clickSoundEnabled();
    request.clickSoundStyle = clickSoundStyle();
    request.outputDirectory = outputDirectoryURL().toLocalFile();
    request.now = m_parts.now();
    request.cameraService = m_parts.camera;
    request.cameraOverlayState = m_cameraOverlayState;
    request.pointerEffectsMonitor = m_parts.pointerEffectsMonitor;
    const QPointer<AppModel> alive(this);
    const RecordingEngine::OnFinish onFinish = [alive, main = &m_parts.mainQueue](Result<RecordingOutput> result) {
        main->post([alive, result = std::move(result)] {
            if (alive)
                alive->handleRecordingResult(result);
        });
    };
    const QUuid recordingID = m_recordingID = QUuid::createUuid();
    const Result<void> started = co_await m_parts.recorder.start(request, onFinish);
    // A recording may be over before its start has answered; then all is told.
    if (!alive || m_recordingID != recordingID)
        co_return;
    if (!started) {
        m_recordingID = {};
        logFailure("start", started.error());
        fail(QString::fromStdString(started.error().message));
        endIfAskedTo();
        co_return;
    }
    setRecordingState(RecordingState::recording);
    startElapsedTimer();
    m_parts.telemetry.trackRecordingStarted(captureMode(), cameraEnabled(), microphoneEnabled());
    if (m_pendingAppTermination)
        stopRecording();
}

QCoro::Task<bool> AppModel::requestAudioPermissionIfNeeded(bool force) {
    if (!force)
        co_return true;
    const auto devices = m_parts.platform.devices;
    if (!devices)
        co_return false;
    const CaptureAuthorization authorization = devices->authorization(CaptureDeviceKind::microphone);
    if (authorization != CaptureAuthorization::undetermined)
        co_return authorization == CaptureAuthorization::authorized;
    const Result<bool> answer = co_await awaitCompletion<bool>(
        [&](auto done) { devices->requestAccess(CaptureDeviceKind::microphone, std::move(done)); });
    co_return answer.value_or(false);
}

void AppModel::startElapsedTimer() {
    m_timer = m_parts.scheduler.every(std::chrono::seconds(1), [this] { setElapsedSeconds(elapsedSeconds() + 1); });
}

void AppModel::stopRecording() {
    if (recordingState() != RecordingState::recording)
        return;
    setRecordingState(RecordingState::stopping);
    m_timer.cancel();
    m_parts.recorder.stop();
}

void AppModel::handleRecordingResult(const Result<RecordingOutput>& result) {
    m_recordingID = {};
    m_timer.cancel();
    if (result) {
        m_parts.telemetry.trackRecordingFinished(elapsedSeconds());
        setLastSavedURL(result->url);
        setLastRecordingHasLiveClickTrack(result->hasLiveClickTrack);
        setCurrentSelection(std::nullopt);
        setRecordingState(RecordingState::idle);
        readScreenPermission();
        refreshDisplays();
        dismissNotice();
        if (const QString words = endingWords(result->ending); !words.isEmpty())
            showNotice(AppNotice::Kind::info, words, AppNotice::RevealFile{result->url});
    } else {
        logFailure("result", result.error());
        fail(QString::fromStdString(result.error().message));
    }
    endIfAskedTo();
}

void AppModel::fail(const QString& message) {
    setErrorMessage(message);
    setRecordingState(RecordingState::failed);
}

void AppModel::requestQuit() {
    if (recordingState() != RecordingState::recording) {
        quitWithoutAsking();
        return;
    }
    setIsSettingsPresented(false);
    setIsCloseConfirmationPresented(true);
}

void AppModel::confirmQuit() {
    setIsCloseConfirmationPresented(false);
    quitWithoutAsking();
}

void AppModel::quitWithoutAsking() {
    // During a countdown there is nothing to be lost until the recorder is asked to start, nor while the desktop asks.
    if (m_recordingID.isNull() || m_parts.recorder.isAskingUser()) {
        m_parts.application.terminate();
        return;
    }
    if (!std::exchange(m_pendingAppTermination, true))
        Q_EMIT willQuitAfterRecording();
    stopRecording();
}

void AppModel::endIfAskedTo() {
    if (std::exchange(m_pendingAppTermination, false))
        m_parts.application.terminate();
}

bool AppModel::isRecordingAtWork() const {
    return recordingState() == RecordingState::countdown || recordingState() == RecordingState::recording ||
           recordingState() == RecordingState::stopping;
}

void AppModel::openLastRecordingInEditor() {
    if (lastSavedURL().isEmpty())
        return;
    const QUrl recording = lastSavedURL();
    const bool hasLiveClickTrack = lastRecordingHasLiveClickTrack();
    setLastSavedURL({});
    setLastRecordingHasLiveClickTrack(false);
    dismissNotice();
    stopCameraAndEdit(recording, hasLiveClickTrack);
}

QCoro::Task<> AppModel::stopCameraAndEdit(QUrl recording, bool hasLiveClickTrack) {
    const QUuid requestID = m_cameraRequestID = QUuid::createUuid();
    storeCameraEnabled(false);
    const QPointer<AppModel> alive(this);
    co_await m_parts.camera->stop();
    if (!alive || m_cameraRequestID != requestID)
        co_return;
    setErrorMessage({});
    if (m_windows.openRecordingEditor)
        m_windows.openRecordingEditor(recording, hasLiveClickTrack);
}

void AppModel::revealLastRecording() {
    if (!lastSavedURL().isEmpty())
        m_parts.platform.workspace->reveal(lastSavedURL());
}

} // namespace keldra
