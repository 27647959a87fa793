#pragma once

#include "platform/AudioMeter.h"
#include "platform/CaptureDevices.h"

#include <memory>

namespace keldra {

/// Measures a microphone of this session's PipeWire, over a tenth of a second.
class PipeWireAudioMeter final : public AudioMeter {
public:
    explicit PipeWireAudioMeter(std::shared_ptr<CaptureDevices> devices);
    ~PipeWireAudioMeter() override;

    /// Returns before the device is heard.
    bool start(const QString& deviceID) override;
    void stop() override;
    std::optional<double> averagePowerLevel() const override;

private:
    class Session;

    const std::shared_ptr<CaptureDevices> m_devices;
    std::unique_ptr<Session> m_session;
};

} // namespace keldra
