#pragma once

#include "app/AppModel.h"

#include <QObject>
#include <QString>

namespace keldra {

/// What the control panel shows and does. Main thread.
class ControlPanelModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString recordLabel READ recordLabel NOTIFY changed)
    Q_PROPERTY(bool isRecordEnabled READ isRecordEnabled NOTIFY changed)
    Q_PROPERTY(bool isReady READ isReady NOTIFY changed)
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
    Q_PROPERTY(bool areModesLive READ areModesLive NOTIFY changed)
    Q_PROPERTY(int activeMode READ activeMode NOTIFY changed)
    Q_PROPERTY(bool isCameraOn READ isCameraOn NOTIFY changed)
    Q_PROPERTY(QString cameraSymbol READ cameraSymbol NOTIFY changed)
    Q_PROPERTY(bool isMicrophoneOn READ isMicrophoneOn NOTIFY changed)
    Q_PROPERTY(QString microphoneSymbol READ microphoneSymbol NOTIFY changed)
    Q_PROPERTY(double microphoneLevel READ microphoneLevel NOTIFY microphoneLevelChanged)
    Q_PROPERTY(bool isSettingsPresented READ isSettingsPresented NOTIFY changed)

public:
    /// `model` lives longer.
    explicit ControlPanelModel(AppModel& model);

    QString recordLabel() const;
    bool isRecordEnabled() const;
    /// A press of the record button records what is selected.
    bool isReady() const;
    bool isRecording() const { return m_model.recordingState() == RecordingState::recording; }
    /// Otherwise the mode buttons are dimmed, and a press does nothing.
    bool areModesLive() const;
    /// Whether the desktop does not allow that mode: its button is dimmed, and a press tells why.
    Q_INVOKABLE bool isModeRefused(int mode) const {
        return m_model.recordsDisplaysOnly() && CaptureMode(mode) != CaptureMode::display;
    }
    /// The position of the CaptureMode that the selection is of; -1 for none.
    int activeMode() const;
    bool isCameraOn() const { return m_model.cameraEnabled(); }
    QString cameraSymbol() const;
    bool isMicrophoneOn() const { return m_model.microphoneEnabled(); }
    QString microphoneSymbol() const;
    /// From 0 to 1; 0 while the microphone is off.
    double microphoneLevel() const;
    bool isSettingsPresented() const { return m_model.isSettingsPresented(); }

    Q_INVOKABLE void quit() { m_model.requestQuit(); }
    Q_INVOKABLE void record();
    Q_INVOKABLE void chooseMode(int mode);
    Q_INVOKABLE void toggleCamera() { m_model.toggleCamera(); }
    Q_INVOKABLE void toggleMicrophone() { m_model.toggleMicrophone(); }
    Q_INVOKABLE void toggleSettings() { m_model.setIsSettingsPresented(!m_model.isSettingsPresented()); }

Q_SIGNALS:
    void changed();
    void microphoneLevelChanged();

private:
    AppModel& m_model;
};

} // namespace keldra
