#include "app/AppModel.h"
#include "app/EffectBounds.h"
#include "async/AwaitCompletion.h"
#include "base/Log.h"

#include <QPointer>

#include <chrono>

namespace keldra {
namespace {

namespace keys = preferenceKeys;

/// Lets the settings panel leave the screen before a dialog comes.
constexpr Duration dialogDelay = std::chrono::milliseconds(80);

} // namespace

void AppModel::loadPreferences() {
    const AppPreferences& preferences = m_parts.preferences;
    AppModelFields::setShowClickIndicators(preferences.value(keys::showClickIndicators));
    AppModelFields::setClickSoundEnabled(preferences.value(keys::clickSoundEnabled));
    AppModelFields::setClickSoundStyle(preferences.value(keys::clickSoundStyle));
    AppModelFields::setAnalyticsEnabled(preferences.value(keys::analyticsEnabled));
    AppModelFields::setCountdownDuration(preferences.value(keys::countdownDuration));
    AppModelFields::setClickIndicatorIntensity(preferences.loadClickIndicatorIntensity());
    AppModelFields::setShowCursorHighlight(preferences.value(keys::showCursorHighlight));
    AppModelFields::setCursorHighlightIntensity(preferences.value(keys::cursorHighlightIntensity));
    AppModelFields::setCursorHighlightSize(preferences.value(keys::cursorHighlightSize));
    setSelectedCameraDeviceID(preferences.value(keys::cameraDeviceID));
    setSelectedMicrophoneDeviceID(preferences.value(keys::microphoneDeviceID));
    AppModelFields::setRecordingQuality(preferences.value(keys::recordingQuality));
    setOutputDirectoryURL(preferences.loadOutputDirectory());
    setCameraOverlaySize(preferences.value(keys::cameraOverlaySize));
    setCameraOverlayShape(preferences.value(keys::cameraOverlayShape));
}

void AppModel::setAnalyticsEnabled(bool isEnabled) {
    AppModelFields::setAnalyticsEnabled(isEnabled);
    m_parts.preferences.setValue(keys::analyticsEnabled, isEnabled);
    m_parts.telemetry.setEnabled(isEnabled);
}

void AppModel::setClickSoundStyle(ClickSoundStyle style) {
    AppModelFields::setClickSoundStyle(style);
    m_parts.preferences.setValue(keys::clickSoundStyle, style);
}

void AppModel::setShowClickIndicators(bool isShown) {
    AppModelFields::setShowClickIndicators(isShown);
    m_parts.preferences.setValue(keys::showClickIndicators, isShown);
    syncPointerEffectsMonitor();
}

void AppModel::setClickSoundEnabled(bool isEnabled) {
    AppModelFields::setClickSoundEnabled(isEnabled);
    m_parts.preferences.setValue(keys::clickSoundEnabled, isEnabled);
    syncPointerEffectsMonitor();
}

void AppModel::setShowCursorHighlight(bool isShown) {
    AppModelFields::setShowCursorHighlight(isShown);
    m_parts.preferences.setValue(keys::showCursorHighlight, isShown);
    syncPointerEffectsMonitor();
}

void AppModel::setCountdownDuration(CountdownDuration duration) {
    AppModelFields::setCountdownDuration(duration);
    m_parts.preferences.setValue(keys::countdownDuration, duration);
}

void AppModel::setClickIndicatorIntensity(double intensity) {
    AppModelFields::setClickIndicatorIntensity(effectBounds::clickIndicatorIntensity.clamp(intensity));
    m_parts.preferences.setValue(keys::clickIndicatorIntensity, clickIndicatorIntensity());
    syncPointerEffectsMonitor();
}

void AppModel::setCursorHighlightIntensity(double intensity) {
    AppModelFields::setCursorHighlightIntensity(effectBounds::cursorHighlightIntensity.clamp(intensity));
    m_parts.preferences.setValue(keys::cursorHighlightIntensity, cursorHighlightIntensity());
    syncPointerEffectsMonitor();
}

void AppModel::setCursorHighlightSize(double points) {
    AppModelFields::setCursorHighlightSize(effectBounds::cursorHighlightSize.clamp(points));
    m_parts.preferences.setValue(keys::cursorHighlightSize, cursorHighlightSize());
    syncPointerEffectsMonitor();
}

void AppModel::syncPointerEffectsMonitor() {
    m_parts.pointerEffectsMonitor->updateSettings({showClickIndicators(), clickSoundEnabled(), showCursorHighlight(),
                                                   clickIndicatorIntensity(), cursorHighlightIntensity(),
                                                   cursorHighlightSize()});
}

void AppModel::setRecordingQuality(RecordingQuality quality) {
    if (!canChangeSettings())
        return;
    AppModelFields::setRecordingQuality(quality);
    m_parts.preferences.setValue(keys::recordingQuality, quality);
}

void AppModel::toggleCameraOverlaySize() {
    setCameraOverlaySize(cameraOverlaySize() == CameraOverlaySize::large ? CameraOverlaySize::small
                                                                         : CameraOverlaySize::large);
    m_parts.preferences.setValue(keys::cameraOverlaySize, cameraOverlaySize());
}

void AppModel::toggleCameraOverlayShape() {
    setCameraOverlayShape(cameraOverlayShape() == CameraOverlayShape::roundedSquare
                              ? CameraOverlayShape::circle
                              : CameraOverlayShape::roundedSquare);
    m_parts.preferences.setValue(keys::cameraOverlayShape, cameraOverlayShape());
}

QCoro::Task<> AppModel::chooseOutputDirectory() {
    if (!canChangeSettings())
        co_return;
    const bool wasPresented = isSettingsPresented();
    setIsSettingsPresented(false);
    const QPointer<AppModel> alive(this);
    co_await m_parts.scheduler.sleep(dialogDelay);
    if (!alive)
        co_return;
    const FolderDialog dialog{tr("Recording folder"), tr("Select"), outputDirectoryURL()};
    const auto dialogs = m_parts.platform.dialogs;
    const Result<std::optional<QUrl>> answer = co_await awaitCompletion<std::optional<QUrl>>(
        [&](auto done) { dialogs->chooseFolder(dialog, std::move(done)); });
    if (!answer)
        logFailure("folder dialog", answer.error());
    if (!alive)
        co_return;
    const std::optional<QUrl> folder = answer.value_or(std::nullopt);
    if (folder) {
        setOutputDirectoryURL(*folder);
        m_parts.preferences.setValue(keys::outputDirectoryPath, folder->toLocalFile());
    }
    setIsSettingsPresented(wasPresented);
    if (folder)
        showNotice(AppNotice::Kind::info, QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Output folder updated")),
                   std::nullopt);
}

} // namespace keldra
