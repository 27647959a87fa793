#pragma once

#include "app/AppModel.h"
#include "capture_ui/CameraPreviewFeed.h"

#include <QObject>
#include <QString>

namespace keldra {

/// What the camera panel shows and does. Main thread.
class WebcamPanelModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isCameraRunning READ isCameraRunning NOTIFY changed)
    Q_PROPERTY(double side READ side NOTIFY changed)
    Q_PROPERTY(double cornerRadius READ cornerRadius NOTIFY changed)
    Q_PROPERTY(bool isLarge READ isLarge NOTIFY changed)
    Q_PROPERTY(QString otherShapeSymbol READ otherShapeSymbol NOTIFY changed)
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
    Q_PROPERTY(keldra::CameraPreviewFeed* feed READ feed CONSTANT)

public:
    /// What is borrowed lives longer.
    WebcamPanelModel(AppModel& model, Scheduler& scheduler);

    bool isCameraRunning() const { return m_model.cameraService()->isRunning(); }
    /// Of the picture, points.
    double side() const { return cameraOverlaySide(m_model.cameraOverlaySize()); }
    double cornerRadius() const { return cameraOverlayCornerRadius(m_model.cameraOverlayShape(), side()); }
    bool isLarge() const { return m_model.cameraOverlaySize() == CameraOverlaySize::large; }
    QString otherShapeSymbol() const;
    bool isRecording() const { return m_model.recordingState() == RecordingState::recording; }
    CameraPreviewFeed* feed() { return &m_feed; }

    Q_INVOKABLE void toggleSize() { m_model.toggleCameraOverlaySize(); }
    Q_INVOKABLE void toggleShape() { m_model.toggleCameraOverlayShape(); }
    Q_INVOKABLE void stopRecording() { m_model.stopRecording(); }

Q_SIGNALS:
    void changed();

private:
    AppModel& m_model;
    CameraPreviewFeed m_feed;
};

} // namespace keldra
