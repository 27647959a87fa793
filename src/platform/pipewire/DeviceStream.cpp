#include "platform/pipewire/DeviceStream.h"

#include "base/Log.h"

#include <pipewire/pipewire.h>
#include <spa/pod/builder.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

/// Between two looks at a device that does not run yet.
constexpr std::chrono::nanoseconds tickPeriod = 200ms;
/// Cameras take their time to wake up.
constexpr int patienceTicks = 25;
/// A device that is not listed by then is not there.
constexpr int absenceTicks = 5;

bool isMicrophone(const DeviceStream::Device& device) {
    return device.kind == DeviceStream::Device::Kind::microphone;
}

const char* prefixOf(const DeviceStream::Device& device) {
    return isMicrophone(device) ? "[KELDRA Mic]" : "[KELDRA Camera]";
}

pw_properties* propertiesOf(const DeviceStream::Device& device, const std::string& serial) {
    pw_properties* properties = isMicrophone(device)
                                    ? pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture",
                                                        PW_KEY_MEDIA_ROLE, "Production", nullptr)
                                    : pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture",
                                                        PW_KEY_MEDIA_ROLE, "Camera", nullptr);
    // By serial: a name could mean another device by the time it is looked for.
    pw_properties_set(properties, PW_KEY_TARGET_OBJECT, serial.c_str());
    if (isMicrophone(device))
        pw_properties_set(properties, PW_KEY_NODE_LATENCY, "1024/48000");
    return properties;
}

} // namespace

DeviceStream::DeviceStream(Device device, Events events)
    : m_device(std::move(device))
    , m_events(std::move(events))
    , m_hook(std::make_unique<spa_hook>())
    , m_connection({.connected =
                        [this](pw_core& core, pw_loop&) {
                            m_core = &core;
                            m_connection.callAfter(tickPeriod);
                        },
                    .lost =
                        [this] {
                            tellGone();
                            close();
                            m_node.reset();
                            m_core = nullptr;
                        },
                    .appeared = [this](const PipeWireNode& node) { appeared(node); },
                    .vanished = [this](std::uint32_t node) { vanished(node); },
                    .unreachable =
                        [this] {
                            if (m_events.refused && !m_wasOpen && !m_isRefused)
                                m_events.refused();
                            m_isRefused = true;
                        },
                    .woken =
                        [this] {
                            if (m_events.woken)
                                m_events.woken();
                        },
                    .timeIsOver = [this] { tick(); }}) {}

DeviceStream::~DeviceStream() {
    m_isEnding = true;
}

void DeviceStream::appeared(const PipeWireNode& node) {
    if (node.name != m_device.name || m_node)
        return;
    m_node = node;
    if (m_wasOpen)
        log(m_device.name + " is back");
    open();
}

void DeviceStream::vanished(std::uint32_t node) {
    if (!m_node || m_node->id != node)
        return;
    tellGone();
    close();
    m_node.reset();
}

void DeviceStream::tellGone() const {
    if (m_isOpen && !m_isEnding)
        log(m_device.name + " is gone; what it gave so far is kept");
}

void DeviceStream::log(const std::string& words) const {
    if (m_device.isLogged)
        logLine(prefixOf(m_device), words);
}

void DeviceStream::open() {
    static const pw_stream_events heard = [] {
        pw_stream_events all{};
        all.version = PW_VERSION_STREAM_EVENTS;
        all.process = [](void* self) {
            auto* stream = static_cast<DeviceStream*>(self);
            stream->m_events.process(*stream->m_stream);
        };
        all.param_changed = [](void* self, std::uint32_t id, const spa_pod* value) {
            auto* stream = static_cast<DeviceStream*>(self);
            if (id != SPA_PARAM_Format || value == nullptr)
                return;
            if (!stream->m_events.formatChosen(*stream->m_stream, *value))
                return stream->failed("it has no format that we know");
            stream->m_isOpen = stream->m_wasOpen = true;
        };
        all.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
            if (now == PW_STREAM_STATE_ERROR)
                static_cast<DeviceStream*>(self)->failed(error != nullptr ? error : "an error without words");
        };
        return all;
    }();
    m_failure.clear();
    m_stream = pw_stream_new(m_core, "KELDRA", propertiesOf(m_device, m_node->serial));
    if (m_stream == nullptr)
        return failed("PipeWire gives no stream");
    pw_stream_add_listener(m_stream, m_hook.get(), &heard, this);

    std::uint8_t bytes[4096];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, bytes, sizeof bytes);
    std::vector<const spa_pod*> formats = m_events.formats(builder);
    const int flags = PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_DONT_RECONNECT |
                      (isMicrophone(m_device) ? PW_STREAM_FLAG_RT_PROCESS : 0);
    if (pw_stream_connect(m_stream, PW_DIRECTION_INPUT, PW_ID_ANY, pw_stream_flags(flags), formats.data(),
                          std::uint32_t(formats.size())) < 0)
        failed("PipeWire does not connect the stream");
}

void DeviceStream::close() {
    if (m_stream == nullptr)
        return;
    spa_hook_remove(m_hook.get());
    pw_stream_destroy(m_stream);
    m_stream = nullptr;
    if (m_isOpen && m_events.closed)
        m_events.closed();
    m_isOpen = false;
}

/// A stream may not go from within its own call; the next tick tries again.
void DeviceStream::failed(const char* reason) {
    m_failure = reason;
    m_connection.callAfter(tickPeriod);
}

void DeviceStream::tick() {
    if (!m_failure.empty() && m_node) {
        log(m_device.name + ": " + m_failure + "; trying again");
        close();
        open();
    }
    if (m_isOpen || m_wasOpen || m_isRefused)
        return;
    if (++m_ticksWaited < (m_node ? patienceTicks : absenceTicks))
        return m_connection.callAfter(tickPeriod);
    m_isRefused = true;
    if (m_events.refused)
        m_events.refused();
}

} // namespace keldra
