#pragma once

#include "app/AppNotice.h"
#include "app/CaptureDisplay.h"
#include "app/RecordingState.h"
#include "platform/CaptureDevices.h"
#include "platform/CaptureSelection.h"
#include "recording/CameraOverlayShape.h"
#include "recording/CameraOverlaySize.h"
#include "recording/ClickSoundStyle.h"
#include "recording/CountdownDuration.h"
#include "recording/RecordingQuality.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <optional>
#include <type_traits>

/// Qt asks an optional variant whether it can be ordered in a way that the compiler takes for an attempt to do so.
template <>
struct QTypeTraits::has_operator_less_than<std::optional<keldra::CaptureSelection>> : std::false_type {};

namespace keldra {

/// What can be seen of the model. Each signal carries the new value and is sent at every set, also when nothing is
/// different. What the views may write themselves has a public setter; the rest is set by the model's operations.
/// Main thread.
class AppModelFields : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<CaptureDisplay> displays READ displays NOTIFY displaysChanged)
    Q_PROPERTY(std::uint32_t selectedDisplayID READ selectedDisplayID NOTIFY selectedDisplayIDChanged)
    Q_PROPERTY(CaptureMode captureMode READ captureMode NOTIFY captureModeChanged)
    Q_PROPERTY(bool hasScreenPermission READ hasScreenPermission NOTIFY hasScreenPermissionChanged)
    Q_PROPERTY(bool microphoneEnabled READ microphoneEnabled NOTIFY microphoneEnabledChanged)
    Q_PROPERTY(double microphoneLevel READ microphoneLevel NOTIFY microphoneLevelChanged)
    Q_PROPERTY(bool cameraEnabled READ cameraEnabled NOTIFY cameraEnabledChanged)
    Q_PROPERTY(bool showClickIndicators READ showClickIndicators NOTIFY showClickIndicatorsChanged)
    Q_PROPERTY(bool clickSoundEnabled READ clickSoundEnabled NOTIFY clickSoundEnabledChanged)
    Q_PROPERTY(ClickSoundStyle clickSoundStyle READ clickSoundStyle NOTIFY clickSoundStyleChanged)
    Q_PROPERTY(bool analyticsEnabled READ analyticsEnabled NOTIFY analyticsEnabledChanged)
    Q_PROPERTY(CountdownDuration countdownDuration READ countdownDuration NOTIFY countdownDurationChanged)
    Q_PROPERTY(double clickIndicatorIntensity READ clickIndicatorIntensity NOTIFY clickIndicatorIntensityChanged)
    Q_PROPERTY(bool showCursorHighlight READ showCursorHighlight NOTIFY showCursorHighlightChanged)
    Q_PROPERTY(double cursorHighlightIntensity READ cursorHighlightIntensity NOTIFY cursorHighlightIntensityChanged)
    Q_PROPERTY(double cursorHighlightSize READ cursorHighlightSize NOTIFY cursorHighlightSizeChanged)
    Q_PROPERTY(QList<CaptureDeviceOption> cameraDevices READ cameraDevices NOTIFY cameraDevicesChanged)
    Q_PROPERTY(QList<CaptureDeviceOption> microphoneDevices READ microphoneDevices NOTIFY microphoneDevicesChanged)
    Q_PROPERTY(QString selectedCameraDeviceID READ selectedCameraDeviceID NOTIFY selectedCameraDeviceIDChanged)
    Q_PROPERTY(
        QString selectedMicrophoneDeviceID READ selectedMicrophoneDeviceID NOTIFY selectedMicrophoneDeviceIDChanged)
    Q_PROPERTY(RecordingQuality recordingQuality READ recordingQuality NOTIFY recordingQualityChanged)
    Q_PROPERTY(QUrl outputDirectoryURL READ outputDirectoryURL NOTIFY outputDirectoryURLChanged)
    Q_PROPERTY(CameraOverlaySize cameraOverlaySize READ cameraOverlaySize NOTIFY cameraOverlaySizeChanged)
    Q_PROPERTY(CameraOverlayShape cameraOverlayShape READ cameraOverlayShape NOTIFY cameraOverlayShapeChanged)
    Q_PROPERTY(bool isSettingsPresented READ isSettingsPresented WRITE setIsSettingsPresented NOTIFY
                   isSettingsPresentedChanged)
    Q_PROPERTY(bool isCloseConfirmationPresented READ isCloseConfirmationPresented WRITE setIsCloseConfirmationPresented
                   NOTIFY isCloseConfirmationPresentedChanged)
    Q_PROPERTY(bool isSelectionRequiredPresented READ isSelectionRequiredPresented WRITE setIsSelectionRequiredPresented
                   NOTIFY isSelectionRequiredPresentedChanged)
    Q_PROPERTY(RecordingState recordingState READ recordingState NOTIFY recordingStateChanged)
    Q_PROPERTY(int elapsedSeconds READ elapsedSeconds NOTIFY elapsedSecondsChanged)
    Q_PROPERTY(QUrl lastSavedURL READ lastSavedURL WRITE setLastSavedURL NOTIFY lastSavedURLChanged)
    Q_PROPERTY(bool lastRecordingHasLiveClickTrack READ lastRecordingHasLiveClickTrack NOTIFY
                   lastRecordingHasLiveClickTrackChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage WRITE setErrorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(std::optional<CaptureSelection> currentSelection READ currentSelection WRITE setCurrentSelection NOTIFY
                   currentSelectionChanged)
    Q_PROPERTY(std::optional<AppNotice> notice READ notice NOTIFY noticeChanged)

public:
    const QList<CaptureDisplay>& displays() const { return m_displays; }
    /// The display that a selection begins on; 0 for none.
    std::uint32_t selectedDisplayID() const { return m_selectedDisplayID; }
    CaptureMode captureMode() const { return m_captureMode; }
    bool hasScreenPermission() const { return m_hasScreenPermission; }
    bool microphoneEnabled() const { return m_microphoneEnabled; }
    /// From 0 to 1.
    double microphoneLevel() const { return m_microphoneLevel; }
    bool cameraEnabled() const { return m_cameraEnabled; }
    bool showClickIndicators() const { return m_showClickIndicators; }
    bool clickSoundEnabled() const { return m_clickSoundEnabled; }
    ClickSoundStyle clickSoundStyle() const { return m_clickSoundStyle; }
    bool analyticsEnabled() const { return m_analyticsEnabled; }
    CountdownDuration countdownDuration() const { return m_countdownDuration; }
    double clickIndicatorIntensity() const { return m_clickIndicatorIntensity; }
    bool showCursorHighlight() const { return m_showCursorHighlight; }
    double cursorHighlightIntensity() const { return m_cursorHighlightIntensity; }
    /// Points.
    double cursorHighlightSize() const { return m_cursorHighlightSize; }
    const QList<CaptureDeviceOption>& cameraDevices() const { return m_cameraDevices; }
    const QList<CaptureDeviceOption>& microphoneDevices() const { return m_microphoneDevices; }
    /// Empty for none, as with the microphone's.
    const QString& selectedCameraDeviceID() const { return m_selectedCameraDeviceID; }
    const QString& selectedMicrophoneDeviceID() const { return m_selectedMicrophoneDeviceID; }
    RecordingQuality recordingQuality() const { return m_recordingQuality; }
    const QUrl& outputDirectoryURL() const { return m_outputDirectoryURL; }
    CameraOverlaySize cameraOverlaySize() const { return m_cameraOverlaySize; }
    CameraOverlayShape cameraOverlayShape() const { return m_cameraOverlayShape; }
    bool isSettingsPresented() const { return m_isSettingsPresented; }
    bool isCloseConfirmationPresented() const { return m_isCloseConfirmationPresented; }
    /// The panel that asks for a source first is open.
    bool isSelectionRequiredPresented() const { return m_isSelectionRequiredPresented; }
    RecordingState recordingState() const { return m_recordingState; }
    /// Whole seconds of the current or last recording.
    int elapsedSeconds() const { return m_elapsedSeconds; }
    /// The finished recording that the user has not yet decided about; empty for none.
    const QUrl& lastSavedURL() const { return m_lastSavedURL; }
    bool lastRecordingHasLiveClickTrack() const { return m_lastRecordingHasLiveClickTrack; }
    /// The last failure, in the user's words; empty for none.
    const QString& errorMessage() const { return m_errorMessage; }
    /// What will be recorded.
    const std::optional<CaptureSelection>& currentSelection() const { return m_currentSelection; }
    const std::optional<AppNotice>& notice() const { return m_notice; }

    void setIsSettingsPresented(bool value) {
        set(m_isSettingsPresented, value, &AppModelFields::isSettingsPresentedChanged);
    }
    void setIsCloseConfirmationPresented(bool value) {
        set(m_isCloseConfirmationPresented, value, &AppModelFields::isCloseConfirmationPresentedChanged);
    }
    void setIsSelectionRequiredPresented(bool value) {
        set(m_isSelectionRequiredPresented, value, &AppModelFields::isSelectionRequiredPresentedChanged);
    }
    void setLastSavedURL(const QUrl& value) { set(m_lastSavedURL, value, &AppModelFields::lastSavedURLChanged); }
    void setErrorMessage(const QString& value) { set(m_errorMessage, value, &AppModelFields::errorMessageChanged); }
    void setCurrentSelection(const std::optional<CaptureSelection>& value) {
        set(m_currentSelection, value, &AppModelFields::currentSelectionChanged);
    }

Q_SIGNALS:
    void displaysChanged(const QList<CaptureDisplay>& value);
    void selectedDisplayIDChanged(std::uint32_t value);
    void captureModeChanged(CaptureMode value);
    void hasScreenPermissionChanged(bool value);
    void microphoneEnabledChanged(bool value);
    void microphoneLevelChanged(double value);
    void cameraEnabledChanged(bool value);
    void showClickIndicatorsChanged(bool value);
    void clickSoundEnabledChanged(bool value);
    void clickSoundStyleChanged(ClickSoundStyle value);
    void analyticsEnabledChanged(bool value);
    void countdownDurationChanged(CountdownDuration value);
    void clickIndicatorIntensityChanged(double value);
    void showCursorHighlightChanged(bool value);
    void cursorHighlightIntensityChanged(double value);
    void cursorHighlightSizeChanged(double value);
    void cameraDevicesChanged(const QList<CaptureDeviceOption>& value);
    void microphoneDevicesChanged(const QList<CaptureDeviceOption>& value);
    void selectedCameraDeviceIDChanged(const QString& value);
    void selectedMicrophoneDeviceIDChanged(const QString& value);
    void recordingQualityChanged(RecordingQuality value);
    void outputDirectoryURLChanged(const QUrl& value);
    void cameraOverlaySizeChanged(CameraOverlaySize value);
    void cameraOverlayShapeChanged(CameraOverlayShape value);
    void isSettingsPresentedChanged(bool value);
    void isCloseConfirmationPresentedChanged(bool value);
    void isSelectionRequiredPresentedChanged(bool value);
    void recordingStateChanged(RecordingState value);
    void elapsedSecondsChanged(int value);
    void lastSavedURLChanged(const QUrl& value);
    void lastRecordingHasLiveClickTrackChanged(bool value);
    void errorMessageChanged(const QString& value);
    void currentSelectionChanged(const std::optional<CaptureSelection>& value);
    void noticeChanged(const std::optional<AppNotice>& value);

protected:
    void setDisplays(const QList<CaptureDisplay>& value) { set(m_displays, value, &AppModelFields::displaysChanged); }
    void setSelectedDisplayID(std::uint32_t value) {
        set(m_selectedDisplayID, value, &AppModelFields::selectedDisplayIDChanged);
    }
    void setCaptureMode(CaptureMode value) { set(m_captureMode, value, &AppModelFields::captureModeChanged); }
    void setHasScreenPermission(bool value) {
        set(m_hasScreenPermission, value, &AppModelFields::hasScreenPermissionChanged);
    }
    void setMicrophoneEnabled(bool value) {
        set(m_microphoneEnabled, value, &AppModelFields::microphoneEnabledChanged);
    }
    void setMicrophoneLevel(double value) { set(m_microphoneLevel, value, &AppModelFields::microphoneLevelChanged); }
    void setCameraEnabled(bool value) { set(m_cameraEnabled, value, &AppModelFields::cameraEnabledChanged); }
    void setShowClickIndicators(bool value) {
        set(m_showClickIndicators, value, &AppModelFields::showClickIndicatorsChanged);
    }
    void setClickSoundEnabled(bool value) {
        set(m_clickSoundEnabled, value, &AppModelFields::clickSoundEnabledChanged);
    }
    void setClickSoundStyle(ClickSoundStyle value) {
        set(m_clickSoundStyle, value, &AppModelFields::clickSoundStyleChanged);
    }
    void setAnalyticsEnabled(bool value) { set(m_analyticsEnabled, value, &AppModelFields::analyticsEnabledChanged); }
    void setCountdownDuration(CountdownDuration value) {
        set(m_countdownDuration, value, &AppModelFields::countdownDurationChanged);
    }
    void setClickIndicatorIntensity(double value) {
        set(m_clickIndicatorIntensity, value, &AppModelFields::clickIndicatorIntensityChanged);
    }
    void setShowCursorHighlight(bool value) {
        set(m_showCursorHighlight, value, &AppModelFields::showCursorHighlightChanged);
    }
    void setCursorHighlightIntensity(double value) {
        set(m_cursorHighlightIntensity, value, &AppModelFields::cursorHighlightIntensityChanged);
    }
    void setCursorHighlightSize(double value) {
        set(m_cursorHighlightSize, value, &AppModelFields::cursorHighlightSizeChanged);
    }
    void setCameraDevices(const QList<CaptureDeviceOption>& value) {
        set(m_cameraDevices, value, &AppModelFields::cameraDevicesChanged);
    }
    void setMicrophoneDevices(const QList<CaptureDeviceOption>& value) {
        set(m_microphoneDevices, value, &AppModelFields::microphoneDevicesChanged);
    }
    void setSelectedCameraDeviceID(const QString& value) {
        set(m_selectedCameraDeviceID, value, &AppModelFields::selectedCameraDeviceIDChanged);
    }
    void setSelectedMicrophoneDeviceID(const QString& value) {
        set(m_selectedMicrophoneDeviceID, value, &AppModelFields::selectedMicrophoneDeviceIDChanged);
    }
    void setRecordingQuality(RecordingQuality value) {
        set(m_recordingQuality, value, &AppModelFields::recordingQualityChanged);
    }
    void setOutputDirectoryURL(const QUrl& value) {
        set(m_outputDirectoryURL, value, &AppModelFields::outputDirectoryURLChanged);
    }
    void setCameraOverlaySize(CameraOverlaySize value) {
        set(m_cameraOverlaySize, value, &AppModelFields::cameraOverlaySizeChanged);
    }
    void setCameraOverlayShape(CameraOverlayShape value) {
        set(m_cameraOverlayShape, value, &AppModelFields::cameraOverlayShapeChanged);
    }
    void setRecordingState(RecordingState value) {
        set(m_recordingState, value, &AppModelFields::recordingStateChanged);
    }
    void setElapsedSeconds(int value) { set(m_elapsedSeconds, value, &AppModelFields::elapsedSecondsChanged); }
    void setLastRecordingHasLiveClickTrack(bool value) {
        set(m_lastRecordingHasLiveClickTrack, value, &AppModelFields::lastRecordingHasLiveClickTrackChanged);
    }
    void setNotice(const std::optional<AppNotice>& value) { set(m_notice, value, &AppModelFields::noticeChanged); }

private:
    /// Observers get a value that stays theirs, whatever they set in turn.
    template <typename T, typename Signal>
    void set(T& field, T value, Signal signal) {
        field = value;
        Q_EMIT(this->*signal)(value);
    }

    QList<CaptureDisplay> m_displays;
    std::uint32_t m_selectedDisplayID = 0;
    CaptureMode m_captureMode = CaptureMode::window;
    bool m_hasScreenPermission = false;
    bool m_microphoneEnabled = false;
    double m_microphoneLevel = 0;
    bool m_cameraEnabled = false;
    bool m_showClickIndicators = true;
    bool m_clickSoundEnabled = false;
    ClickSoundStyle m_clickSoundStyle = ClickSoundStyle::soft;
    bool m_analyticsEnabled = false;
    CountdownDuration m_countdownDuration = CountdownDuration::five;
    double m_clickIndicatorIntensity = 1;
    bool m_showCursorHighlight = false;
    double m_cursorHighlightIntensity = 0.65;
    double m_cursorHighlightSize = 48;
    QList<CaptureDeviceOption> m_cameraDevices;
    QList<CaptureDeviceOption> m_microphoneDevices;
    QString m_selectedCameraDeviceID;
    QString m_selectedMicrophoneDeviceID;
    RecordingQuality m_recordingQuality = RecordingQuality::high;
    QUrl m_outputDirectoryURL;
    CameraOverlaySize m_cameraOverlaySize = CameraOverlaySize::large;
    CameraOverlayShape m_cameraOverlayShape = CameraOverlayShape::circle;
    bool m_isSettingsPresented = false;
    bool m_isCloseConfirmationPresented = false;
    bool m_isSelectionRequiredPresented = false;
    RecordingState m_recordingState = RecordingState::idle;
    int m_elapsedSeconds = 0;
    QUrl m_lastSavedURL;
    bool m_lastRecordingHasLiveClickTrack = false;
    QString m_errorMessage;
    std::optional<CaptureSelection> m_currentSelection;
    std::optional<AppNotice> m_notice;
};

} // namespace keldra
