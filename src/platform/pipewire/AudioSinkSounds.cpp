#include "platform/pipewire/AudioSinkSounds.h"

#include "platform/pipewire/ShortSound.h"

namespace keldra {

using namespace std::chrono_literals;

void AudioSinkSounds::play(const QString& name) {
    std::vector<float> sound = shortSound(name);
    if (sound.empty())
        return;
    if (m_sink)
        m_sink->reset();
    else
        m_sink = m_makeSink();
    m_sound = std::move(sound);
    m_fedFrames = 0;
    feed();
    m_sink->start();
    // A sink takes a fifth of a second.
    m_feeding = m_scheduler.every(50ms, [this] { feed(); });
    // The next one often follows at once; and what no device has played by then is not played late.
    m_goodbye = m_scheduler.after(3s, [this] {
        m_feeding.cancel();
        m_sink.reset();
    });
}

void AudioSinkSounds::feed() {
    const std::size_t frames = m_sound.size() / AudioSink::channelCount;
    m_fedFrames += m_sink->write(m_sound.data() + m_fedFrames * AudioSink::channelCount, frames - m_fedFrames);
    if (m_fedFrames == frames)
        m_feeding.cancel();
}

} // namespace keldra
