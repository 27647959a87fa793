#pragma once

#include "app/AppModelFields.h"
#include "app/AppPreferences.h"
#include "app/RecordingEngine.h"
#include "async/Scheduler.h"
#include "base/Executor.h"
#include "platform/Application.h"
#include "platform/Platform.h"
#include "recording/CameraOverlayState.h"
#include "recording/CameraService.h"
#include "recording/MicrophoneLevelMonitor.h"
#include "recording/PointerEffectsMonitor.h"
#include "services/Telemetry.h"

#include <QCoroTask>
#include <QDateTime>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// What only windows can do for the model; the windows install it. Each may be missing.
struct AppModelWindows {
    /// Lets the user pick on that display; nothing when cancelled.
    std::function<QCoro::Task<std::optional<CaptureSelection>>(CaptureMode, std::uint32_t displayID)>
        requestCaptureSelection;
    std::function<QCoro::Task<>()> runCountdown;
    std::function<void(QUrl, bool hasLiveClickTrack)> openRecordingEditor;
    std::function<void()> openVideoPicker;
};

/// The one observable object of the recorder's side: every action of the user enters here. It holds the state machine
/// of a recording, asks for permissions, mirrors the preferences, and keeps the device lists fresh. It knows no window.
///
/// Threads: main. An operation that waits may interleave with others: after each wait it looks whether the model still
///          lives and whether its request is still the last.
/// Errors:  all are told through `errorMessage`, and thereby as notices.
class AppModel : public AppModelFields {
    Q_OBJECT

public:
    /// All that is borrowed lives longer than the model.
    struct Parts {
        Platform platform;
        Application& application;
        AppPreferences& preferences;
        RecordingEngine& recorder;
        std::shared_ptr<CameraService> camera;
        MicrophoneLevelMonitor& microphoneLevelMonitor;
        std::shared_ptr<PointerEffectsMonitor> pointerEffectsMonitor;
        Telemetry& telemetry;
        Scheduler& scheduler;
        Executor& mainQueue;
        /// The calendar, which names files.
        std::function<QDateTime()> now;
    };

    explicit AppModel(Parts parts);
    ~AppModel() override;

    void setWindows(AppModelWindows windows) { m_windows = std::move(windows); }
    const AppModelWindows& windows() const { return m_windows; }
    const std::shared_ptr<CameraService>& cameraService() const { return m_parts.camera; }
    const std::shared_ptr<PointerEffectsMonitor>& pointerEffectsMonitor() const {
        return m_parts.pointerEffectsMonitor;
    }
    const std::shared_ptr<CameraOverlayState>& cameraOverlayState() const { return m_cameraOverlayState; }

    bool canChangeSettings() const;
    /// Whether recordings show displays only, because the desktop lets nobody pick anything else.
    bool recordsDisplaysOnly() const { return bool(m_parts.platform.pickDisplay); }
    /// Points, without the frame of the camera panel.
    int cameraPreviewHeight() const;

    // Recording.

    /// The record button: starts, or stops while recording. A press while another is at work does nothing.
    QCoro::Task<> startRecording();
    /// Nothing unless recording.
    Q_INVOKABLE void stopRecording();
    QCoro::Task<> requestScreenPermission();
    /// Asks first while recording.
    Q_INVOKABLE void requestQuit();
    Q_INVOKABLE void confirmQuit();
    /// Ends the program without asking: at once, or as soon as the recording that is at work has become a whole file.
    void quitWithoutAsking();
    /// Whether a recording is counted down, runs, or is being finished.
    bool isRecordingAtWork() const;
    Q_INVOKABLE void openLastRecordingInEditor();
    Q_INVOKABLE void revealLastRecording();

    // Selection.

    /// Choosing the active mode again clears the selection. Where the desktop picks, a display is the only one; the
    /// others are refused with a notice.
    QCoro::Task<> selectCaptureMode(CaptureMode mode);
    /// Whether a selection stands now. Unless forced, one that stands is enough.
    QCoro::Task<bool> chooseCaptureSelection(bool force);
    /// `rect` in desktop points.
    void updateRegionSelection(const QRectF& rect);

    // Devices.

    Q_INVOKABLE void toggleCamera();
    QCoro::Task<> toggleMicrophone();
    /// Ids that are not listed are refused without a word.
    Q_INVOKABLE void selectCameraDevice(const QString& deviceID);
    Q_INVOKABLE void selectMicrophoneDevice(const QString& deviceID);
    void refreshDisplays();
    void refreshCaptureDevices();

    // Notices.

    void showNotice(AppNotice::Kind kind, const QString& message, std::optional<AppNotice::Action> action);
    Q_INVOKABLE void dismissNotice();
    Q_INVOKABLE void performNoticeAction();

    // Settings: each is stored, and then written to the preferences.

    Q_INVOKABLE void setAnalyticsEnabled(bool isEnabled);
    Q_INVOKABLE void setClickSoundStyle(ClickSoundStyle style);
    Q_INVOKABLE void setShowClickIndicators(bool isShown);
    Q_INVOKABLE void setClickSoundEnabled(bool isEnabled);
    Q_INVOKABLE void setShowCursorHighlight(bool isShown);
    Q_INVOKABLE void setCountdownDuration(CountdownDuration duration);
    /// These three are clamped.
    Q_INVOKABLE void setClickIndicatorIntensity(double intensity);
    Q_INVOKABLE void setCursorHighlightIntensity(double intensity);
    Q_INVOKABLE void setCursorHighlightSize(double points);
    /// Refused without a word unless settings can be changed, as is the choice of a folder.
    Q_INVOKABLE void setRecordingQuality(RecordingQuality quality);
    Q_INVOKABLE void toggleCameraOverlaySize();
    Q_INVOKABLE void toggleCameraOverlayShape();
    QCoro::Task<> chooseOutputDirectory();

Q_SIGNALS:
    /// The program ends with the recording at work; until then nothing is shown.
    void willQuitAfterRecording();

private:
    void loadPreferences();
    void readScreenPermission();
    void watch();

    QCoro::Task<> askOrBegin();
    QCoro::Task<> beginRecording();
    QCoro::Task<> runRecorder(CaptureSelection selection);
    void selectDisplay();
    QCoro::Task<bool> requestAudioPermissionIfNeeded(bool force);
    void startElapsedTimer();
    void handleRecordingResult(const Result<RecordingOutput>& result);
    void fail(const QString& message);
    QCoro::Task<> stopCameraAndEdit(QUrl recording, bool hasLiveClickTrack);

    void requestCameraState(bool isEnabled);
    QCoro::Task<> applyCameraState(bool isEnabled, QUuid requestID);
    void storeCameraEnabled(bool isEnabled);
    void refuseCamera();
    void updateMicrophoneMonitor();
    void syncPointerEffectsMonitor();

    void noteErrorMessage(const QString& message);
    void endIfAskedTo();

    const Parts m_parts;
    const std::shared_ptr<CameraOverlayState> m_cameraOverlayState = std::make_shared<CameraOverlayState>();
    AppModelWindows m_windows;

    Timer m_timer;
    Timer m_noticeTimer;
    std::optional<QString> m_lastErrorMessage;
    /// A press of the record button is at work.
    bool m_isStarting = false;
    /// The program ends with the recording's result, so that the file is whole.
    bool m_pendingAppTermination = false;
    /// Of the recording whose result is still to come; null for none.
    QUuid m_recordingID;
    /// Of the latest wish about the camera; the outcome of earlier ones is nobody's business.
    QUuid m_cameraRequestID = QUuid::createUuid();
};

} // namespace keldra
