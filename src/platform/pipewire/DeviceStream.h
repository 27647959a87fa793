#pragma once

#include "platform/pipewire/PipeWireConnection.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pw_core;
struct pw_stream;
struct spa_hook;
struct spa_pod;
struct spa_pod_builder;

namespace keldra {

/// Listens to one device of this session's PipeWire, or looks through it: as long as it is there, again when it comes
/// back, and never to another one in its place.
///
/// Threads: everything is told on the connection's thread, but for `process` of a device that is heard in real time,
/// which comes from PipeWire's own, and must not wait. After the destructor nothing is told.
class DeviceStream {
public:
    struct Device {
        /// The node's name.
        std::string name;
        enum class Kind { microphone, camera } kind = Kind::microphone;
        /// Whether its going and coming is of interest.
        bool isLogged = true;
    };
    struct Events {
        /// What we take, the best first.
        std::function<std::vector<const spa_pod*>(spa_pod_builder&)> formats;
        /// What the device gives. False: it is none of ours after all.
        std::function<bool(pw_stream&, const spa_pod&)> formatChosen;
        std::function<void(pw_stream&)> process;
        /// The device went, or was closed by the destructor; nothing is processed until the next format.
        std::function<void()> closed;
        /// It did not come within so long as a device takes to start; told at most once, before any format.
        std::function<void()> refused;
        /// After wake().
        std::function<void()> woken;
    };

    DeviceStream(Device device, Events events);
    ~DeviceStream();

    /// Has `woken` run. Any thread; never waits.
    void wake() { m_connection.wake(); }

private:
    void appeared(const PipeWireNode& node);
    void vanished(std::uint32_t node);
    void open();
    void close();
    void tick();
    void failed(const char* reason);
    void tellGone() const;
    void log(const std::string& words) const;

    const Device m_device;
    const Events m_events;
    pw_core* m_core = nullptr;
    std::optional<PipeWireNode> m_node;
    pw_stream* m_stream = nullptr;
    std::unique_ptr<spa_hook> m_hook;
    /// Empty while nothing failed.
    std::string m_failure;
    /// A format was chosen, since the device came and ever.
    bool m_isOpen = false;
    bool m_wasOpen = false;
    bool m_isRefused = false;
    int m_ticksWaited = 0;
    std::atomic<bool> m_isEnding = false;

    /// The first to go: nothing is called after it.
    PipeWireConnection m_connection;
};

} // namespace keldra
