#pragma once

#include "base/Executor.h"
#include "imaging/PixelBuffer.h"
#include "platform/CameraSession.h"
#include "platform/CaptureDevices.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QUuid>

#include <memory>
#include <mutex>
#include <optional>

namespace keldra {

/// Runs the camera for the bubble on the screen and for the recording. Of starts and stops that overlap the last one
/// decides what is published.
///
/// Threads: main, but for latestFrame(), which is for any thread. Every signal carries the new value and is sent at
///          every set.
class CameraService : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isAuthorized READ isAuthorized NOTIFY isAuthorizedChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    Q_PROPERTY(bool isTransitioning READ isTransitioning NOTIFY isTransitioningChanged)
    Q_PROPERTY(int previewGeneration READ previewGeneration NOTIFY previewGenerationChanged)

public:
    /// Without devices or session (a desktop with no cameras) every start is refused. `frameQueue` must outlive the
    /// service.
    CameraService(std::shared_ptr<CaptureDevices> devices, std::unique_ptr<CameraSession> session,
                  Executor& frameQueue);
    ~CameraService() override;

    bool isAuthorized() const { return m_isAuthorized; }
    /// Frames come.
    bool isRunning() const { return m_isRunning; }
    /// A start or a stop is under way.
    bool isTransitioning() const { return m_isTransitioning; }
    /// Raised by each start that succeeds.
    int previewGeneration() const { return m_previewGeneration; }
    /// Why the last start failed; empty otherwise.
    QString userFacingError() const { return m_userFacingError; }

    QCoro::Task<bool> requestAccess();
    /// An empty or unknown id means the desktop's choice. Answers whether this start has made the camera run.
    QCoro::Task<bool> start(QString deviceID);
    QCoro::Task<> stop();

    /// The newest picture, mirrored; none while the camera does not run.
    PixelBuffer latestFrame() const;

Q_SIGNALS:
    void isAuthorizedChanged(bool isAuthorized);
    void isRunningChanged(bool isRunning);
    void isTransitioningChanged(bool isTransitioning);
    void previewGenerationChanged(int previewGeneration);

private:
    struct FrameBox;

    QCoro::Task<Result<void>> run(QString deviceID, QUuid token);
    void release();
    void setAuthorized(bool isAuthorized);
    void setRunning(bool isRunning);
    void setTransitioning(bool isTransitioning);

    const std::shared_ptr<CaptureDevices> m_devices;
    const std::unique_ptr<CameraSession> m_session;
    Executor& m_frameQueue;
    /// Shared with frames on their way.
    const std::shared_ptr<FrameBox> m_frames;
    bool m_isAuthorized = false;
    bool m_isRunning = false;
    bool m_isTransitioning = false;
    int m_previewGeneration = 0;
    QString m_userFacingError;
    /// Nothing while the session is being set up, so that nobody relies on what is about to change.
    std::optional<QString> m_configuredDeviceID;
    /// Of the latest start or stop.
    QUuid m_operationToken;
};

} // namespace keldra
