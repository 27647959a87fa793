#include "capture_ui/ControlPanelModel.h"

namespace keldra {

ControlPanelModel::ControlPanelModel(AppModel& model) : m_model(model) {
    const auto notify = [this] { Q_EMIT changed(); };
    connect(&model, &AppModelFields::recordingStateChanged, this, notify);
    connect(&model, &AppModelFields::currentSelectionChanged, this, notify);
    connect(&model, &AppModelFields::captureModeChanged, this, notify);
    connect(&model, &AppModelFields::cameraEnabledChanged, this, notify);
    connect(&model, &AppModelFields::microphoneEnabledChanged, this, notify);
    connect(&model, &AppModelFields::isSettingsPresentedChanged, this, notify);
    connect(&model, &AppModelFields::microphoneEnabledChanged, this, &ControlPanelModel::microphoneLevelChanged);
    connect(&model, &AppModelFields::microphoneLevelChanged, this, &ControlPanelModel::microphoneLevelChanged);
}

QString ControlPanelModel::recordLabel() const {
    return isRecording() ? tr("Stop recording") : tr("Start recording");
}

bool ControlPanelModel::isRecordEnabled() const {
    switch (m_model.recordingState()) {
    case RecordingState::requestingPermission:
    case RecordingState::countdown:
    case RecordingState::stopping:
        return false;
    case RecordingState::idle:
    case RecordingState::recording:
    case RecordingState::failed:
        break;
    }
    return true;
}

bool ControlPanelModel::isReady() const {
    return m_model.canChangeSettings() && (m_model.currentSelection() || m_model.recordsDisplaysOnly());
}

bool ControlPanelModel::areModesLive() const {
    switch (m_model.recordingState()) {
    case RecordingState::countdown:
    case RecordingState::recording:
    case RecordingState::stopping:
        return false;
    case RecordingState::idle:
    case RecordingState::requestingPermission:
    case RecordingState::failed:
        break;
    }
    return true;
}

int ControlPanelModel::activeMode() const {
    const std::optional<CaptureSelection>& selection = m_model.currentSelection();
    const bool isActive = selection && modeOf(*selection) == m_model.captureMode();
    return isActive ? static_cast<int>(m_model.captureMode()) : -1;
}

QString ControlPanelModel::cameraSymbol() const {
    return isCameraOn() ? QStringLiteral("video.fill") : QStringLiteral("video.slash.fill");
}

QString ControlPanelModel::microphoneSymbol() const {
    return isMicrophoneOn() ? QStringLiteral("mic") : QStringLiteral("mic.slash");
}

double ControlPanelModel::microphoneLevel() const {
    return isMicrophoneOn() ? m_model.microphoneLevel() : 0;
}

void ControlPanelModel::record() {
    // A press may be on its way while the button becomes disabled.
    if (!isRecordEnabled())
        return;
    if (isRecording())
        m_model.stopRecording();
    else
        m_model.startRecording();
}

void ControlPanelModel::chooseMode(int mode) {
    if (areModesLive())
        m_model.selectCaptureMode(static_cast<CaptureMode>(mode));
}

} // namespace keldra
