#include "devices/Program.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace keldra::test {

Words::Words(int count, char** arguments, const char* usage, std::map<std::string, std::string> defaults)
    : m_usage(usage), m_values(std::move(defaults)) {
    for (int i = 1; i < count; i += 2) {
        const auto found = std::strncmp(arguments[i], "--", 2) == 0 ? m_values.find(arguments[i] + 2) : m_values.end();
        if (found == m_values.end() || i + 1 == count) {
            std::fputs(usage, stderr);
            std::exit(2);
        }
        found->second = arguments[i + 1];
    }
}

double Words::number(const std::string& name) const {
    const std::string& value = text(name);
    char* end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0') {
        std::fprintf(stderr, "--%s needs a number, not \"%s\"\n%s", name.c_str(), value.c_str(), m_usage);
        std::exit(2);
    }
    return number;
}

std::int64_t hostNanoseconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

DriverNode::DriverNode(const char* name, pw_properties* properties, Events events) : m_events(std::move(events)) {
    // A device is prompt, however busy the machine is.
    setenv("PIPEWIRE_CONFIG_NAME", "client-rt.conf", 0);
    pw_init(nullptr, nullptr);
    m_loop = pw_main_loop_new(nullptr);
    pw_loop* loop = pw_main_loop_get_loop(m_loop);
    for (const int number : {SIGINT, SIGTERM})
        pw_loop_add_signal(
            loop, number, [](void* self, int) { pw_main_loop_quit(static_cast<DriverNode*>(self)->m_loop); }, this);
    m_timer = pw_loop_add_timer(
        loop, [](void* self, std::uint64_t) { static_cast<DriverNode*>(self)->cycle(); }, this);

    static const pw_stream_events heard = [] {
        pw_stream_events all{};
        all.version = PW_VERSION_STREAM_EVENTS;
        all.io_changed = ioChanged;
        all.state_changed = stateChanged;
        all.process = process;
        all.param_changed = [](void* self, std::uint32_t id, const spa_pod* value) {
            if (id == SPA_PARAM_Format && value != nullptr)
                static_cast<DriverNode*>(self)->m_events.formatChosen(*value);
        };
        return all;
    }();
    m_stream = pw_stream_new_simple(loop, name, properties, &heard, this);
}

DriverNode::~DriverNode() {
    m_isEnding = true;
    if (m_stream != nullptr)
        pw_stream_destroy(m_stream);
    pw_main_loop_destroy(m_loop);
}

int DriverNode::run(const spa_pod** params, std::uint32_t count) {
    const auto flags = pw_stream_flags(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS);
    if (m_stream == nullptr || pw_stream_connect(m_stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, params, count) < 0) {
        std::fputs("there is no PipeWire daemon to give a device to\n", stderr);
        return 1;
    }
    pw_main_loop_run(m_loop);
    return m_status;
}

void DriverNode::ioChanged(void* self, std::uint32_t id, void* area, std::uint32_t) {
    if (id == SPA_IO_Position)
        static_cast<DriverNode*>(self)->m_position = static_cast<spa_io_position*>(area);
}

void DriverNode::stateChanged(void* self, pw_stream_state, pw_stream_state now, const char* error) {
    auto* node = static_cast<DriverNode*>(self);
    if (node->m_isEnding)
        return;
    if (now == PW_STREAM_STATE_ERROR || (now == PW_STREAM_STATE_UNCONNECTED && node->m_isUp)) {
        std::fprintf(stderr, "PipeWire ended the device: %s\n", error != nullptr ? error : "disconnected");
        node->m_status = 1;
        pw_main_loop_quit(node->m_loop);
    }
    if (now == PW_STREAM_STATE_PAUSED && !node->m_isUp) {
        node->m_isUp = true;
        std::puts("up");
        std::fflush(stdout);
    }
    const bool isStreaming = now == PW_STREAM_STATE_STREAMING;
    if (isStreaming == node->m_isStreaming)
        return;
    node->m_isStreaming = isStreaming;
    node->arm(isStreaming ? node->m_events.nextCycle(true) : 0);
}

void DriverNode::cycle() {
    pw_stream_trigger_process(m_stream);
    arm(m_events.nextCycle(false));
}

void DriverNode::process(void* self) {
    auto* node = static_cast<DriverNode*>(self);
    if (pw_buffer* buffer = pw_stream_dequeue_buffer(node->m_stream)) {
        if (buffer->buffer->datas[0].data != nullptr)
            node->m_events.fill(*buffer);
        pw_stream_queue_buffer(node->m_stream, buffer);
    }
}

void DriverNode::arm(std::int64_t due) {
    timespec time{due / 1'000'000'000, due % 1'000'000'000};
    pw_loop_update_timer(pw_main_loop_get_loop(m_loop), m_timer, &time, nullptr, true);
}

} // namespace keldra::test
