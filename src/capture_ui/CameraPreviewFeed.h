#pragma once

#include "async/Scheduler.h"
#include "recording/CameraService.h"

#include <QObject>

#include <memory>

namespace keldra {

/// The camera's pictures for whoever shows them: looks for a new one while the camera runs and somebody watches, and
/// tells only when there is one. Main thread.
class CameraPreviewFeed : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isWatched READ isWatched WRITE setIsWatched NOTIFY isWatchedChanged)

public:
    /// `scheduler` lives longer.
    CameraPreviewFeed(std::shared_ptr<CameraService> camera, Scheduler& scheduler);

    bool isWatched() const { return m_isWatched; }
    void setIsWatched(bool isWatched);
    /// The newest; none while the camera does not run.
    const PixelBuffer& picture() const { return m_picture; }

Q_SIGNALS:
    void isWatchedChanged();
    void pictureChanged();

private:
    void update();
    void setPicture(PixelBuffer picture);

    const std::shared_ptr<CameraService> m_camera;
    Scheduler& m_scheduler;
    bool m_isWatched = false;
    Timer m_timer;
    /// Held, so that its memory is not used for another picture meanwhile.
    PixelBuffer m_picture;
};

} // namespace keldra
