#include "capture_ui/WebcamPanelModel.h"

namespace keldra {

WebcamPanelModel::WebcamPanelModel(AppModel& model, Scheduler& scheduler)
    : m_model(model), m_feed(model.cameraService(), scheduler) {
    const auto notify = [this] { Q_EMIT changed(); };
    connect(&model, &AppModelFields::recordingStateChanged, this, notify);
    connect(&model, &AppModelFields::cameraOverlaySizeChanged, this, notify);
    connect(&model, &AppModelFields::cameraOverlayShapeChanged, this, notify);
    connect(model.cameraService().get(), &CameraService::isRunningChanged, this, notify);
}

QString WebcamPanelModel::otherShapeSymbol() const {
    return m_model.cameraOverlayShape() == CameraOverlayShape::circle ? QStringLiteral("square")
                                                                      : QStringLiteral("circle");
}

} // namespace keldra
