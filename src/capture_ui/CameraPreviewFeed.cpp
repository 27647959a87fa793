#include "capture_ui/CameraPreviewFeed.h"

#include <chrono>

namespace keldra {
namespace {

constexpr Duration period = std::chrono::microseconds(33333);

} // namespace

CameraPreviewFeed::CameraPreviewFeed(std::shared_ptr<CameraService> camera, Scheduler& scheduler)
    : m_camera(std::move(camera)), m_scheduler(scheduler) {
    connect(m_camera.get(), &CameraService::isRunningChanged, this, &CameraPreviewFeed::update);
}

void CameraPreviewFeed::setIsWatched(bool isWatched) {
    if (m_isWatched == isWatched)
        return;
    m_isWatched = isWatched;
    update();
    Q_EMIT isWatchedChanged();
}

void CameraPreviewFeed::update() {
    if (!m_camera->isRunning())
        setPicture({});
    if (m_isWatched && m_camera->isRunning())
        m_timer = m_scheduler.every(period, [this] { setPicture(m_camera->latestFrame()); });
    else
        m_timer.cancel();
}

void CameraPreviewFeed::setPicture(PixelBuffer picture) {
    if (picture.data() == m_picture.data())
        return;
    m_picture = std::move(picture);
    Q_EMIT pictureChanged();
}

} // namespace keldra
