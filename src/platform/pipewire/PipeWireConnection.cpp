#include "platform/pipewire/PipeWireConnection.h"

#include "base/Log.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <pipewire/extensions/metadata.h>
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

template <typename... Parameters, typename... Arguments>
void tell(const std::function<void(Parameters...)>& event, Arguments&&... arguments) {
    if (event)
        event(std::forward<Arguments>(arguments)...);
}

PipeWireNode nodeOf(std::uint32_t id, const spa_dict& properties) {
    const auto text = [&](const char* key) {
        const char* value = spa_dict_lookup(&properties, key);
        return std::string(value != nullptr ? value : "");
    };
    PipeWireNode node;
    node.id = id;
    node.serial = text(PW_KEY_OBJECT_SERIAL);
    node.mediaClass = text(PW_KEY_MEDIA_CLASS);
    node.mediaRole = text(PW_KEY_MEDIA_ROLE);
    node.name = text(PW_KEY_NODE_NAME);
    node.description = text(PW_KEY_NODE_DESCRIPTION);
    if (node.description.empty())
        node.description = text(PW_KEY_NODE_NICK);
    node.sessionPriority = std::atoi(text(PW_KEY_PRIORITY_SESSION).c_str());
    return node;
}

} // namespace

struct PipeWireConnection::Loop {
    explicit Loop(Events told);
    ~Loop();

    void start();
    void connect();
    void disconnect();
    void wokenUp();

    void listen();
    void bindChoices(std::uint32_t id);
    void unbindChoices();

    static void roundTripDone(void* self, std::uint32_t id, int sequence);
    static int choiceChanged(void* self, std::uint32_t subject, const char* key, const char* type, const char* value);
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
    /// Where the desktop notes its choices.
    pw_metadata* choices = nullptr;
    std::uint32_t choicesID = 0;
    spa_hook choicesHook{};
    /// Until everything was told that was there at first.
    int roundTrip = 0;
    int roundTripsLeft = 0;
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
        loop, [](void* self, std::uint64_t) { tell(static_cast<Loop*>(self)->events.timeIsOver); }, this);
    // The first connection takes time too: it reads configuration and loads modules.
    arm(loop, retrying, 1ns);
}

void PipeWireConnection::Loop::start() {
    if (thread != nullptr)
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
        // The configuration that lets PipeWire's thread go before others, where the system allows it: sound that comes
        // while it waits is lost.
        context = pw_context_new(loop, pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    core = context != nullptr ? pw_context_connect(context, nullptr, 0) : nullptr;
    if (core == nullptr) {
        tell(events.unreachable);
        return arm(loop, retrying, retryPeriod);
    }
    listen();
    tell(events.connected, *core, *loop);
    // What is there is told in the first round trip; choices, for which we ask then, in the second.
    roundTripsLeft = 2;
    roundTrip = pw_core_sync(core, PW_ID_CORE, 0);
}

void PipeWireConnection::Loop::listen() {
    static const pw_core_events coreEvents = [] {
        pw_core_events heard{};
        heard.version = PW_VERSION_CORE_EVENTS;
        heard.done = roundTripDone;
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
}

void PipeWireConnection::Loop::roundTripDone(void* self, std::uint32_t id, int sequence) {
    auto* loop = static_cast<Loop*>(self);
    if (id != PW_ID_CORE || sequence != loop->roundTrip || loop->roundTripsLeft == 0)
        return;
    if (--loop->roundTripsLeft > 0)
        loop->roundTrip = pw_core_sync(loop->core, PW_ID_CORE, 0);
    else
        tell(loop->events.listed);
}

void PipeWireConnection::Loop::disconnect() {
    if (core == nullptr)
        return;
    tell(events.lost);
    unbindChoices();
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
    tell(events.woken);
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
    if (properties == nullptr)
        return;
    auto* loop = static_cast<Loop*>(self);
    if (std::string(type) == PW_TYPE_INTERFACE_Node) {
        if (const PipeWireNode node = nodeOf(id, *properties); !node.mediaClass.empty())
            tell(loop->events.appeared, node);
    } else if (std::string(type) == PW_TYPE_INTERFACE_Metadata) {
        const char* name = spa_dict_lookup(properties, PW_KEY_METADATA_NAME);
        if (loop->events.chosen && name != nullptr && std::string(name) == "default")
            loop->bindChoices(id);
    }
}

void PipeWireConnection::Loop::globalVanished(void* self, std::uint32_t id) {
    auto* loop = static_cast<Loop*>(self);
    if (loop->choices != nullptr && id == loop->choicesID)
        loop->unbindChoices();
    tell(loop->events.vanished, id);
}

void PipeWireConnection::Loop::bindChoices(std::uint32_t id) {
    unbindChoices();
    static const pw_metadata_events heard = [] {
        pw_metadata_events all{};
        all.version = PW_VERSION_METADATA_EVENTS;
        all.property = choiceChanged;
        return all;
    }();
    choices =
        static_cast<pw_metadata*>(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
    choicesID = id;
    if (choices != nullptr)
        pw_metadata_add_listener(choices, &choicesHook, &heard, this);
}

void PipeWireConnection::Loop::unbindChoices() {
    if (choices == nullptr)
        return;
    spa_hook_remove(&choicesHook);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(choices));
    choices = nullptr;
}

int PipeWireConnection::Loop::choiceChanged(void* self, std::uint32_t subject, const char* key, const char*,
                                            const char* value) {
    // Without a key all are gone, but then so is who made them.
    if (subject == PW_ID_CORE && key != nullptr)
        static_cast<Loop*>(self)->events.chosen(key, value != nullptr ? value : "");
    return 0;
}

PipeWireConnection::PipeWireConnection(Events events) : m_loop(std::make_unique<Loop>(std::move(events))) {
    // Whoever is told may wake us.
    m_loop->start();
}

PipeWireConnection::~PipeWireConnection() = default;

void PipeWireConnection::wake() {
    if (m_loop->waking != nullptr)
        pw_loop_signal_event(m_loop->loop, m_loop->waking);
}

void PipeWireConnection::callAfter(std::chrono::nanoseconds delay) {
    arm(m_loop->loop, m_loop->delaying, delay);
}

} // namespace keldra
