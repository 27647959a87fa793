#include "recording/MicrophoneLevelMonitor.h"

#include <algorithm>

namespace keldra {
namespace {

/// Decibels from silence to full scale.
constexpr double range = 55;

} // namespace

MicrophoneLevelMonitor::MicrophoneLevelMonitor(std::shared_ptr<CaptureDevices> devices,
                                               std::unique_ptr<AudioMeter> meter, Scheduler& scheduler)
    : m_devices(std::move(devices)), m_meter(std::move(meter)), m_scheduler(scheduler) {}

bool MicrophoneLevelMonitor::start(const QString& deviceID) {
    if (isRunning() && m_currentDeviceID == deviceID)
        return true;
    std::optional<CaptureDeviceOption> device;
    if (m_devices && m_meter)
        device = chooseDevice(m_devices->devices(CaptureDeviceKind::microphone), deviceID,
                              m_devices->defaultDeviceID(CaptureDeviceKind::microphone));
    if (!device || !m_meter->start(device->id)) {
        stop();
        return false;
    }
    m_currentDeviceID = device->id;
    m_decayTimer =
        m_scheduler.every(tickInterval, [this] { setLevel(levelAfterTick(m_level, m_meter->averagePowerLevel())); });
    return true;
}

void MicrophoneLevelMonitor::stop() {
    m_decayTimer.cancel();
    if (m_meter)
        m_meter->stop();
    m_currentDeviceID.clear();
    setLevel(0);
}

double MicrophoneLevelMonitor::levelAfterTick(double level, std::optional<double> power) {
    const double height = power ? (*power + range) / range : 0;
    const double target = height <= 0 ? 0 : std::min(height * 1.18, 1.0);
    return std::max(target, level * 0.72 - 0.01);
}

void MicrophoneLevelMonitor::setLevel(double level) {
    m_level = level;
    Q_EMIT levelChanged(level);
}

} // namespace keldra
