#include "app/AppModel.h"

#include <QPointer>

#include <algorithm>

namespace keldra {
namespace {

namespace keys = preferenceKeys;

bool isListed(const QList<CaptureDeviceOption>& devices, const QString& deviceID) {
    return std::any_of(devices.begin(), devices.end(), [&](const auto& each) { return each.id == deviceID; });
}

/// What can be chosen now, and what is.
struct DeviceList {
    QList<CaptureDeviceOption> devices;
    /// The selected device while it is there; else the desktop's choice; empty for none.
    QString selectedID;
};

DeviceList listDevices(const CaptureDevices* port, CaptureDeviceKind kind, const QString& selectedID) {
    if (!port)
        return {};
    const QList<CaptureDeviceOption> devices = port->devices(kind);
    const auto chosen = chooseDevice(devices, selectedID, port->defaultDeviceID(kind));
    return {devices, chosen ? chosen->id : QString()};
}

} // namespace

void AppModel::refreshCaptureDevices() {
    const CaptureDevices* port = m_parts.platform.devices.get();
    const QString oldCamera = selectedCameraDeviceID();
    const QString oldMicrophone = selectedMicrophoneDeviceID();
    const DeviceList cameras = listDevices(port, CaptureDeviceKind::camera, oldCamera);
    const DeviceList microphones = listDevices(port, CaptureDeviceKind::microphone, oldMicrophone);
    setCameraDevices(cameras.devices);
    setMicrophoneDevices(microphones.devices);
    if (cameras.selectedID != oldCamera)
        setSelectedCameraDeviceID(cameras.selectedID);
    m_parts.preferences.setValue(keys::cameraDeviceID, cameras.selectedID);
    if (microphones.selectedID != oldMicrophone)
        setSelectedMicrophoneDeviceID(microphones.selectedID);
    m_parts.preferences.setValue(keys::microphoneDeviceID, microphones.selectedID);

    if (!oldCamera.isEmpty() && cameras.selectedID != oldCamera && cameraEnabled())
        requestCameraState(true);
    if (!oldMicrophone.isEmpty() && microphones.selectedID != oldMicrophone)
        updateMicrophoneMonitor();
}

void AppModel::toggleCamera() {
    const bool isEnabled = !cameraEnabled();
    storeCameraEnabled(isEnabled);
    requestCameraState(isEnabled);
}

void AppModel::requestCameraState(bool isEnabled) {
    m_cameraRequestID = QUuid::createUuid();
    applyCameraState(isEnabled, m_cameraRequestID);
}

QCoro::Task<> AppModel::applyCameraState(bool isEnabled, QUuid requestID) {
    const QPointer<AppModel> alive(this);
    bool isDone = true;
    if (isEnabled) {
        const QString deviceID = selectedCameraDeviceID();
        isDone = co_await m_parts.camera->start(deviceID);
    } else {
        co_await m_parts.camera->stop();
    }
    if (!alive || m_cameraRequestID != requestID)
        co_return;
    if (isDone)
        setErrorMessage({});
    else
        refuseCamera();
}

void AppModel::storeCameraEnabled(bool isEnabled) {
    setCameraEnabled(isEnabled);
    m_parts.preferences.setValue(keys::cameraEnabled, isEnabled);
}

void AppModel::refuseCamera() {
    storeCameraEnabled(false);
    const QString reason = m_parts.camera->userFacingError();
    setErrorMessage(reason.isEmpty() ? QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Could not enable the camera."))
                                     : reason);
}

QCoro::Task<> AppModel::toggleMicrophone() {
    const bool wasEnabled = microphoneEnabled();
    if (!wasEnabled) {
        const QPointer<AppModel> alive(this);
        const bool isGranted = co_await requestAudioPermissionIfNeeded(true);
        if (!alive)
            co_return;
        if (!isGranted) {
            setErrorMessage(QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Microphone access was not granted.")));
            co_return;
        }
    }
    if (recordingState() == RecordingState::recording) {
        const bool isSwitched = m_parts.recorder.setMicrophoneEnabled(!wasEnabled);
        if (!isSwitched && !wasEnabled) {
            setErrorMessage(QStringLiteral(
                QT_TRANSLATE_NOOP("Messages", "The microphone was not ready to be enabled during this recording.")));
            co_return;
        }
    }
    setMicrophoneEnabled(!wasEnabled);
    m_parts.preferences.setValue(keys::microphoneEnabled, !wasEnabled);
    updateMicrophoneMonitor();
    setErrorMessage({});
}

void AppModel::selectCameraDevice(const QString& deviceID) {
    if (!isListed(cameraDevices(), deviceID))
        return;
    setSelectedCameraDeviceID(deviceID);
    m_parts.preferences.setValue(keys::cameraDeviceID, deviceID);
    if (cameraEnabled())
        requestCameraState(true);
}

void AppModel::selectMicrophoneDevice(const QString& deviceID) {
    if (!isListed(microphoneDevices(), deviceID))
        return;
    setSelectedMicrophoneDeviceID(deviceID);
    m_parts.preferences.setValue(keys::microphoneDeviceID, deviceID);
    updateMicrophoneMonitor();
}

void AppModel::updateMicrophoneMonitor() {
    const CaptureDevices* port = m_parts.platform.devices.get();
    const bool isAuthorized =
        port && port->authorization(CaptureDeviceKind::microphone) == CaptureAuthorization::authorized;
    if (!microphoneEnabled() || !isAuthorized)
        m_parts.microphoneLevelMonitor.stop();
    else if (!m_parts.microphoneLevelMonitor.start(selectedMicrophoneDeviceID()))
        setMicrophoneLevel(0);
}

} // namespace keldra
