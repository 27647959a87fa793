#pragma once

#include "recording/CameraOverlayShape.h"
#include "recording/CameraOverlaySize.h"

#include <QRectF>

#include <mutex>

namespace keldra {

/// The place and look of the camera bubble.
struct CameraOverlaySnapshot {
    /// The camera runs and its panel is on the screen.
    bool isVisible = false;
    /// Desktop points.
    QRectF frame;
    CameraOverlayShape shape = CameraOverlayShape::circle;
    /// Desktop points; a circle needs none.
    double cornerRadius = 0;
    friend bool operator==(const CameraOverlaySnapshot&, const CameraOverlaySnapshot&) = default;
};

/// Length of the bubble's sides in desktop points.
double cameraOverlaySide(CameraOverlaySize size);
/// Corner radius of a bubble with that side, desktop points.
double cameraOverlayCornerRadius(CameraOverlayShape shape, double side);

/// The box through which the bubble's place reaches the recording. Any thread.
class CameraOverlayState {
public:
    CameraOverlaySnapshot snapshot() const;
    void setSnapshot(const CameraOverlaySnapshot& snapshot);

private:
    mutable std::mutex m_lock;
    CameraOverlaySnapshot m_snapshot;
};

} // namespace keldra
