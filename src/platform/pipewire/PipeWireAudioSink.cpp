#include "platform/pipewire/PipeWireAudioSink.h"

#include "base/Log.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t ringFrames = AudioSink::sampleRate / 5;
constexpr std::size_t bytesPerFrame = AudioSink::channelCount * sizeof(float);
/// A device that asks for nothing for so long has gone; the longest cycle of PipeWire is shorter.
constexpr std::int64_t longestSilence = 250'000'000;
/// After so long without sound the device may sleep; it wakes up slowly, so not between a seek and the next.
constexpr std::chrono::nanoseconds idlePeriod = 2s;

/// CLOCK_MONOTONIC, as HostClock and PipeWire count it.
std::int64_t nowInNanoseconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

/// When the first frame is heard that is handed to the stream now; nothing as long as the stream does not know.
std::optional<std::int64_t> nextHeardAt(pw_stream* stream) {
    pw_time time{};
    if (pw_stream_get_time_n(stream, &time, sizeof time) < 0 || time.rate.denom == 0)
        return std::nullopt;
    const double delay = double(time.delay) * time.rate.num / time.rate.denom;
    const double ahead = double(time.queued + time.buffered) / AudioSink::sampleRate;
    return time.now + std::int64_t((delay + ahead) * 1e9);
}

} // namespace

PipeWireAudioSink::PipeWireAudioSink()
    : m_ring(ringFrames)
    , m_streamHook(std::make_unique<spa_hook>())
    , m_connection({.connected = [this](pw_core& core, pw_loop&) { openStream(core); },
                    .lost = [this] { closeStream(); },
                    .appeared =
                        [this](const PipeWireNode& node) {
                            if (node.mediaClass == "Audio/Sink" || node.mediaClass == "Audio/Duplex")
                                m_outputs.insert(node.id);
                            updateDevices();
                        },
                    .vanished =
                        [this](std::uint32_t node) {
                            m_outputs.erase(node);
                            updateDevices();
                        },
                    .woken = [this] { updateActivity(); },
                    .timeIsOver =
                        [this] {
                            if (m_stream != nullptr && !m_isStarted)
                                pw_stream_set_active(m_stream, false);
                        }}) {}

PipeWireAudioSink::~PipeWireAudioSink() = default;

void PipeWireAudioSink::start() {
    m_isStarted = true;
    m_connection.wake();
}

void PipeWireAudioSink::reset() {
    m_isStarted = false;
    m_ring.forget();
    m_connection.wake();
}

std::optional<AudioSink::Position> PipeWireAudioSink::position() const {
    const std::int64_t now = nowInNanoseconds();
    if (!m_hasDevice || now - m_lastAsked > longestSilence)
        return std::nullopt;
    const auto last = m_lastBlock.latest();
    return last ? positionAt(now, *last, m_ring.firstKept()) : std::nullopt;
}

void PipeWireAudioSink::openStream(pw_core& core) {
    static const pw_stream_events events = [] {
        pw_stream_events heard{};
        heard.version = PW_VERSION_STREAM_EVENTS;
        heard.process = [](void* self) { static_cast<PipeWireAudioSink*>(self)->process(); };
        return heard;
    }();
    m_stream = pw_stream_new(&core, "KELDRA",
                             pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                                               PW_KEY_MEDIA_ROLE, "Movie", PW_KEY_NODE_LATENCY, "1024/48000", nullptr));
    if (m_stream == nullptr)
        return logLine("[KELDRA Sound]", "PipeWire gives no stream; there will be no sound");
    pw_stream_add_listener(m_stream, m_streamHook.get(), &events, this);

    std::uint8_t bytes[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes, sizeof bytes);
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = sampleRate;
    format.channels = channelCount;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format)};
    const int flags = PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS |
                      (m_isStarted ? 0 : PW_STREAM_FLAG_INACTIVE);
    if (pw_stream_connect(m_stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, pw_stream_flags(flags), formats, 1) < 0) {
        logLine("[KELDRA Sound]", "PipeWire does not connect the stream; there will be no sound");
        closeStream();
    }
    updateDevices();
}

void PipeWireAudioSink::closeStream() {
    m_outputs.clear();
    if (m_stream != nullptr) {
        spa_hook_remove(m_streamHook.get());
        pw_stream_destroy(m_stream);
        m_stream = nullptr;
    }
    updateDevices();
}

void PipeWireAudioSink::updateActivity() {
    if (m_stream == nullptr)
        return;
    if (m_isStarted)
        pw_stream_set_active(m_stream, true);
    else
        m_connection.callAfter(idlePeriod);
}

void PipeWireAudioSink::updateDevices() {
    m_hasDevice = m_stream != nullptr && !m_outputs.empty();
}

void PipeWireAudioSink::process() {
    const auto heardAt = nextHeardAt(m_stream);
    pw_buffer* buffer = pw_stream_dequeue_buffer(m_stream);
    if (buffer == nullptr)
        return;
    m_lastAsked = nowInNanoseconds();
    spa_data& data = buffer->buffer->datas[0];
    std::size_t wanted = data.maxsize / bytesPerFrame;
    if (buffer->requested != 0)
        wanted = std::min<std::size_t>(wanted, buffer->requested);
    auto* frames = static_cast<float*>(data.data);
    const SoundRing::Taken taken = m_ring.read(frames, m_isStarted ? wanted : 0);
    std::fill(frames + taken.count * channelCount, frames + wanted * channelCount, 0.0F);
    if (taken.count > 0 && heardAt)
        m_lastBlock.publish({taken.firstFrame, std::int64_t(taken.count), *heardAt});

    data.chunk->offset = 0;
    data.chunk->stride = bytesPerFrame;
    data.chunk->size = std::uint32_t(wanted * bytesPerFrame);
    buffer->size = wanted;
    pw_stream_queue_buffer(m_stream, buffer);
}

} // namespace keldra
