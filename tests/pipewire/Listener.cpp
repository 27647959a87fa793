#include "Listener.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

namespace keldra::test {

Listener::Listener() : m_hook(std::make_unique<spa_hook>()) {
    pw_init(nullptr, nullptr);
    m_loop = pw_thread_loop_new("Listener", nullptr);
    pw_thread_loop_start(m_loop);
    pw_thread_loop_lock(m_loop);
    static const pw_stream_events events = [] {
        pw_stream_events heard{};
        heard.version = PW_VERSION_STREAM_EVENTS;
        heard.process = [](void* self) { static_cast<Listener*>(self)->process(); };
        return heard;
    }();
    // Prompt where that is allowed: what a listener misses while a busy machine lets it wait was heard all the same.
    m_context = pw_context_new(pw_thread_loop_get_loop(m_loop),
                               pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    if (pw_core* core = pw_context_connect(m_context, nullptr, 0))
        m_stream = pw_stream_new(core, "Listener",
                                 pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture",
                                                   PW_KEY_STREAM_CAPTURE_SINK, "true", nullptr));
    if (m_stream != nullptr) {
        pw_stream_add_listener(m_stream, m_hook.get(), &events, this);
        std::uint8_t bytes[1024];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes, sizeof bytes);
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = 48000;
        format.channels = 2;
        format.position[0] = SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
        const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
        pw_stream_connect(
            m_stream, PW_DIRECTION_INPUT, PW_ID_ANY,
            pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS),
            formats, 1);
    }
    pw_thread_loop_unlock(m_loop);
}

Listener::~Listener() {
    pw_thread_loop_stop(m_loop);
    if (m_stream != nullptr)
        pw_stream_destroy(m_stream);
    pw_context_destroy(m_context);
    pw_thread_loop_destroy(m_loop);
}

std::vector<Listener::Frame> Listener::heard() const {
    const std::lock_guard guard(m_lock);
    return m_heard;
}

void Listener::forget() {
    const std::lock_guard guard(m_lock);
    m_heard.clear();
}

void Listener::process() {
    pw_time time{};
    pw_stream_get_time_n(m_stream, &time, sizeof time);
    pw_buffer* buffer = pw_stream_dequeue_buffer(m_stream);
    if (buffer == nullptr)
        return;
    const spa_data& data = buffer->buffer->datas[0];
    const auto* samples = static_cast<const float*>(data.data) + data.chunk->offset / sizeof(float);
    const auto count = std::int64_t(data.chunk->size / (2 * sizeof(float)));
    // The output drives the graph, so what comes in one cycle was played in the one before.
    const std::int64_t cycleStart = time.now - count * 1'000'000'000 / 48000;
    {
        const std::lock_guard guard(m_lock);
        for (std::int64_t i = 0; i < count; ++i)
            if (samples[2 * i] != 0 || samples[2 * i + 1] != 0)
                m_heard.push_back({samples[2 * i], samples[2 * i + 1], cycleStart + i * 1'000'000'000 / 48000});
    }
    pw_stream_queue_buffer(m_stream, buffer);
}

} // namespace keldra::test
