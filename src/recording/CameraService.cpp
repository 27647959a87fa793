#include "recording/CameraService.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "recording/CameraServiceError.h"

#include <QPointer>

namespace keldra {

struct CameraService::FrameBox {
    PixelBuffer latest() const {
        const std::lock_guard guard(m_lock);
        return m_latest;
    }
    void take(PixelBuffer frame) {
        const std::lock_guard guard(m_lock);
        if (m_isAccepting)
            // The older frame goes after the lock.
            std::swap(m_latest, frame);
    }
    void setAccepting(bool isAccepting) {
        const std::lock_guard guard(m_lock);
        m_isAccepting = isAccepting;
        if (!isAccepting)
            m_latest = {};
    }

private:
    mutable std::mutex m_lock;
    PixelBuffer m_latest;
    bool m_isAccepting = false;
};

CameraService::CameraService(std::shared_ptr<CaptureDevices> devices, std::unique_ptr<CameraSession> session,
                             Executor& frameQueue)
    : m_devices(std::move(devices))
    , m_session(std::move(session))
    , m_frameQueue(frameQueue)
    , m_frames(std::make_shared<FrameBox>())
    , m_isAuthorized(m_devices &&
                     m_devices->authorization(CaptureDeviceKind::camera) == CaptureAuthorization::authorized) {}

CameraService::~CameraService() = default;

QCoro::Task<bool> CameraService::requestAccess() {
    if (!m_devices)
        co_return false;
    switch (m_devices->authorization(CaptureDeviceKind::camera)) {
    case CaptureAuthorization::authorized:
        co_return true;
    case CaptureAuthorization::denied:
        co_return false;
    case CaptureAuthorization::undetermined:
        break;
    }
    const auto devices = m_devices;
    const Result<bool> answer = co_await awaitCompletion<bool>(
        [&](auto done) { devices->requestAccess(CaptureDeviceKind::camera, std::move(done)); });
    co_return answer.value_or(false);
}

QCoro::Task<bool> CameraService::start(QString deviceID) {
    const QPointer<CameraService> alive(this);
    m_userFacingError.clear();
    const bool isGranted = co_await requestAccess();
    if (!alive)
        co_return false;
    setAuthorized(isGranted);
    if (!isGranted) {
        m_userFacingError = QStringLiteral(QT_TRANSLATE_NOOP("Messages", "Camera access was not granted."));
        co_return false;
    }

    const QUuid token = m_operationToken = QUuid::createUuid();
    setTransitioning(true);
    const Result<void> started = co_await run(std::move(deviceID), token);
    if (!alive || m_operationToken != token)
        co_return false;
    setTransitioning(false);
    m_frames->setAccepting(started.has_value());
    setRunning(started.has_value());
    if (!started) {
        m_userFacingError = QString::fromStdString(started.error().message);
        release();
        co_return false;
    }
    Q_EMIT previewGenerationChanged(++m_previewGeneration);
    co_return true;
}

QCoro::Task<Result<void>> CameraService::run(QString deviceID, QUuid token) {
    const Error gone{"CameraService", 1, "The camera session is no longer available.", {}};
    const QPointer<CameraService> alive(this);
    const auto camera = chooseDevice(m_devices->devices(CaptureDeviceKind::camera), deviceID,
                                     m_devices->defaultDeviceID(CaptureDeviceKind::camera));
    if (!camera || !m_session)
        co_return fail(makeError(CameraServiceError::noCameraAvailable));

    if (m_configuredDeviceID != camera->id) {
        m_configuredDeviceID.reset();
        const CameraSession::FrameHandler keep = [frames = m_frames](PixelBuffer frame) {
            frames->take(std::move(frame));
        };
        const Result<void> configured = co_await awaitCompletion<void>(
            [&](auto done) { m_session->configure(camera->id, m_frameQueue, keep, std::move(done)); });
        // A stop that came meanwhile must not find the camera running afterwards.
        if (!alive || m_operationToken != token)
            co_return fail(gone);
        CO_TRY(configured);
        m_configuredDeviceID = camera->id;
    }
    const Result<bool> isRunning =
        co_await awaitCompletion<bool>([&](auto done) { m_session->start(std::move(done)); });
    CO_TRY(isRunning);
    if (!*isRunning)
        co_return fail(Error{"CameraService", 2, "The camera could not start.", {}});
    co_return {};
}

/// A camera that is told to be off holds no device, whatever it ran on before; the next start sets up anew.
void CameraService::release() {
    m_configuredDeviceID.reset();
    if (m_session)
        m_session->stop([](const Result<void>&) {});
}

QCoro::Task<> CameraService::stop() {
    const QPointer<CameraService> alive(this);
    const QUuid token = m_operationToken = QUuid::createUuid();
    setTransitioning(true);
    if (m_session)
        // What does not stop delivers nothing that is kept.
        (void)co_await awaitCompletion<void>([&](auto done) { m_session->stop(std::move(done)); });
    if (!alive || m_operationToken != token)
        co_return;
    m_frames->setAccepting(false);
    setRunning(false);
    setTransitioning(false);
}

PixelBuffer CameraService::latestFrame() const {
    return m_frames->latest();
}

void CameraService::setAuthorized(bool isAuthorized) {
    m_isAuthorized = isAuthorized;
    Q_EMIT isAuthorizedChanged(isAuthorized);
}

void CameraService::setRunning(bool isRunning) {
    m_isRunning = isRunning;
    Q_EMIT isRunningChanged(isRunning);
}

void CameraService::setTransitioning(bool isTransitioning) {
    m_isTransitioning = isTransitioning;
    Q_EMIT isTransitioningChanged(isTransitioning);
}

} // namespace keldra
