#include "recording/CameraOverlayState.h"

namespace keldra {

double cameraOverlaySide(CameraOverlaySize size) {
    return size == CameraOverlaySize::small ? 180 : 240;
}

double cameraOverlayCornerRadius(CameraOverlayShape shape, double side) {
    return side * (shape == CameraOverlayShape::circle ? 0.5 : 0.16);
}

CameraOverlaySnapshot CameraOverlayState::snapshot() const {
    const std::lock_guard guard(m_lock);
    return m_snapshot;
}

void CameraOverlayState::setSnapshot(const CameraOverlaySnapshot& snapshot) {
    const std::lock_guard guard(m_lock);
    m_snapshot = snapshot;
}

} // namespace keldra
