#pragma once

#include "platform/AudioMeter.h"

#include <memory>
#include <vector>

namespace keldra {

/// What a test sees and steers of a ScriptedAudioMeter; outlives the meter.
struct AudioMeterScript {
    std::optional<double> power;
    bool canStart = true;
    bool isRunning = false;
    std::vector<QString> started;
};

/// A meter that shows what a test says.
class ScriptedAudioMeter final : public AudioMeter {
public:
    explicit ScriptedAudioMeter(std::shared_ptr<AudioMeterScript> script) : m_script(std::move(script)) {}
    bool start(const QString& deviceID) override {
        m_script->started.push_back(deviceID);
        m_script->isRunning = m_script->canStart;
        return m_script->canStart;
    }
    void stop() override { m_script->isRunning = false; }
    std::optional<double> averagePowerLevel() const override { return m_script->power; }

private:
    std::shared_ptr<AudioMeterScript> m_script;
};

} // namespace keldra
