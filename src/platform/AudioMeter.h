#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// Measures how loud a microphone is. Main thread.
class AudioMeter {
public:
    virtual ~AudioMeter() = default;
    /// Measures that device, and no other any more. False when it cannot be heard.
    [[nodiscard]] virtual bool start(const QString& deviceID) = 0;
    virtual void stop() = 0;
    /// Average power of the first channel over the last moments, in decibels below full scale (0 or less); nothing
    /// while there is no channel.
    virtual std::optional<double> averagePowerLevel() const = 0;
};

using AudioMeterFactory = std::function<std::unique_ptr<AudioMeter>()>;

} // namespace keldra
