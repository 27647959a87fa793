#pragma once

#include "async/Scheduler.h"
#include "media/AudioSink.h"
#include "platform/SystemSounds.h"

#include <functional>
#include <memory>
#include <vector>

namespace keldra {

/// Plays the short sounds through a sink that is there only while it is needed, so that a program that is silent holds
/// no device and no place in the desktop's list of players. One sound at a time; a new one ends the one before.
class AudioSinkSounds final : public SystemSounds {
public:
    using SinkFactory = std::function<std::unique_ptr<AudioSink>()>;

    /// `scheduler` lives longer.
    AudioSinkSounds(SinkFactory makeSink, Scheduler& scheduler)
        : m_makeSink(std::move(makeSink)), m_scheduler(scheduler) {}
    void play(const QString& name) override;

private:
    /// Hands over what the sink has room for.
    void feed();

    SinkFactory m_makeSink;
    Scheduler& m_scheduler;
    std::unique_ptr<AudioSink> m_sink;
    std::vector<float> m_sound;
    std::size_t m_fedFrames = 0;
    Timer m_feeding;
    Timer m_goodbye;
};

} // namespace keldra
