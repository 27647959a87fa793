#include "platform/pipewire/PipeWireConnection.h"

#include "base/Log.h"

#include <cerrno>
#include <mutex>
#include <pipewire/pipewire.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

/// Between two tries to connect.
constexpr std::chrono::nanoseconds retryPeriod = 500ms;

void arm(pw_loop* loop, spa_source* timer, std::chrono::nanoseconds delay) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(delay);
    timespec due{seconds.count(), (delay - seconds).count()};
    pw_loop_update_timer(loop, timer, &due, nullptr, false);
}

} // namespace

struct PipeWireConnection::Loop {
    explicit Loop(Events told);
    ~Loop();

    void connect();
    void disconnect();
    void wokenUp();

    static void coreFailed(void* self, std::uint32_t id, int sequence, int result, const char* message);
    static void globalAppeared(void* self, std::uint32_t id, std::uint32_t permissions, const char* type,
                               std::uint32_t version, const spa_dict* properties);
    static void globalVanished(void* self, std::uint32_t id);

    const Events events;
    pw_thread_loop* thread = nullptr;
    pw_loop* loop = nullptr;
    spa_source* waking = nullptr;
    spa_source* retrying = nullptr;
    spa_source* delaying = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_registry* registry = nullptr;
    spa_hook coreHook{};
    spa_hook registryHook{};
    bool isBroken = false;
};

PipeWireConnection::Loop::Loop(Events told) : events(std::move(told)) {
    static std::once_flag once;
    std::call_once(once, [] { pw_init(nullptr, nullptr); });
    thread = pw_thread_loop_new("KELDRA.PipeWire", nullptr);
    if (thread == nullptr) {
        logLine("[KELDRA Sound]", "PipeWire gives no thread; there will be no sound");
        return;
    }
    loop = pw_thread_loop_get_loop(thread);
    waking = pw_loop_add_event(
        loop, [](void* self, std::uint64_t) { static_cast<Loop*>(self)->wokenUp(); }, this);
    retrying = pw_loop_add_timer(
        loop, [](void* self, std::uint64_t) { static_cast<Loop*>(self)->connect(); }, this);
    delaying = pw_loop_add_timer(
        loop, [](void* self, std::uint64_t) { static_cast<Loop*>(self)->events.timeIsOver(); }, this);
    // The first connection takes time too: it reads configuration and loads modules.
    arm(loop, retrying, 1ns);
    pw_thread_loop_start(thread);
}

PipeWireConnection::Loop::~Loop() {
    if (thread == nullptr)
        return;
    pw_thread_loop_stop(thread);
    disconnect();
    if (context != nullptr)
        pw_context_destroy(context);
    for (spa_source* source : {waking, retrying, delaying})
        pw_loop_destroy_source(loop, source);
    pw_thread_loop_destroy(thread);
}

void PipeWireConnection::Loop::connect() {
    if (context == nullptr)
        context = pw_context_new(loop, nullptr, 0);
    core = context != nullptr ? pw_context_connect(context, nullptr, 0) : nullptr;
    if (core == nullptr)
        return arm(loop, retrying, retryPeriod);

    static const pw_core_events coreEvents = [] {
        pw_core_events heard{};
        heard.version = PW_VERSION_CORE_EVENTS;
        heard.error = coreFailed;
        return heard;
    }();
    static const pw_registry_events registryEvents = [] {
        pw_registry_events heard{};
        heard.version = PW_VERSION_REGISTRY_EVENTS;
        heard.global = globalAppeared;
        heard.global_remove = globalVanished;
        return heard;
    }();
    pw_core_add_listener(core, &coreHook, &coreEvents, this);
    registry = pw_core_get_registry(core, PW_VERSION_REGISTRY, 0);
    if (registry != nullptr)
        pw_registry_add_listener(registry, &registryHook, &registryEvents, this);
    events.connected(*core, *loop);
}

void PipeWireConnection::Loop::disconnect() {
    if (core == nullptr)
        return;
    events.lost();
    if (registry != nullptr) {
        spa_hook_remove(&registryHook);
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry));
    }
    spa_hook_remove(&coreHook);
    pw_core_disconnect(core);
    registry = nullptr;
    core = nullptr;
}

void PipeWireConnection::Loop::wokenUp() {
    if (isBroken) {
        isBroken = false;
        disconnect();
        arm(loop, retrying, retryPeriod);
    }
    events.woken();
}

void PipeWireConnection::Loop::coreFailed(void* self, std::uint32_t id, int, int result, const char*) {
    // A failure of the core itself with a broken pipe is the end of the daemon; its object may not go from within its
    // own call.
    auto* loop = static_cast<Loop*>(self);
    if (id != PW_ID_CORE || result != -EPIPE)
        return;
    loop->isBroken = true;
    pw_loop_signal_event(loop->loop, loop->waking);
}

void PipeWireConnection::Loop::globalAppeared(void* self, std::uint32_t id, std::uint32_t, const char* type,
                                              std::uint32_t, const spa_dict* properties) {
    if (properties == nullptr || std::string(type) != PW_TYPE_INTERFACE_Node)
        return;
    if (const char* mediaClass = spa_dict_lookup(properties, PW_KEY_MEDIA_CLASS))
        static_cast<Loop*>(self)->events.appeared(id, mediaClass);
}

void PipeWireConnection::Loop::globalVanished(void* self, std::uint32_t id) {
    static_cast<Loop*>(self)->events.vanished(id);
}

PipeWireConnection::PipeWireConnection(Events events) : m_loop(std::make_unique<Loop>(std::move(events))) {}

PipeWireConnection::~PipeWireConnection() = default;

void PipeWireConnection::wake() {
    if (m_loop->waking != nullptr)
        pw_loop_signal_event(m_loop->loop, m_loop->waking);
}

void PipeWireConnection::callAfter(std::chrono::nanoseconds delay) {
    arm(m_loop->loop, m_loop->delaying, delay);
}

} // namespace keldra
