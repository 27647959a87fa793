#pragma once

#include "async/Scheduler.h"
#include "platform/AudioMeter.h"
#include "platform/CaptureDevices.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace keldra {

/// Feeds the input meter with a level from 0 to 1: up at once, down by and by. Main thread.
class MicrophoneLevelMonitor : public QObject {
    Q_OBJECT
    Q_PROPERTY(double level READ level NOTIFY levelChanged)

public:
    static constexpr Duration tickInterval = std::chrono::milliseconds(60);

    /// Without devices or meter nothing starts. `scheduler` must outlive the monitor.
    MicrophoneLevelMonitor(std::shared_ptr<CaptureDevices> devices, std::unique_ptr<AudioMeter> meter,
                           Scheduler& scheduler);

    /// An unknown id means the desktop's choice. True at once when that device is measured already.
    bool start(const QString& deviceID);
    void stop();
    bool isRunning() const { return bool(m_decayTimer); }
    double level() const { return m_level; }

    /// The level after one tick. `power` is in decibels: -55 is silence, and about -8.4 is full already.
    static double levelAfterTick(double level, std::optional<double> power);

Q_SIGNALS:
    /// At every set.
    void levelChanged(double level);

private:
    void setLevel(double level);

    const std::shared_ptr<CaptureDevices> m_devices;
    const std::unique_ptr<AudioMeter> m_meter;
    Scheduler& m_scheduler;
    Timer m_decayTimer;
    QString m_currentDeviceID;
    double m_level = 0;
};

} // namespace keldra
