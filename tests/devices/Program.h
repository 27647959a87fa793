#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <pipewire/pipewire.h>
#include <string>

namespace keldra::test {

/// The words of a developer program: "--name value" for each known name. Prints `usage` and ends the program when they
/// are wrong.
class Words {
public:
    Words(int count, char** arguments, const char* usage, std::map<std::string, std::string> defaults);
    const std::string& text(const std::string& name) const { return m_values.at(name); }
    double number(const std::string& name) const;

private:
    const char* m_usage;
    std::map<std::string, std::string> m_values;
};

/// CLOCK_MONOTONIC in nanoseconds, as KELDRA's host clock and PipeWire count.
std::int64_t hostNanoseconds();

/// A device of PipeWire's that is a program: a node that drives its own cycles by a clock of its own. Its callbacks run
/// on the loop's thread, and it ends with SIGINT or SIGTERM.
class DriverNode {
public:
    struct Events {
        /// A cycle is due: fill one buffer.
        std::function<void(pw_buffer&)> fill;
        /// Nanoseconds of host time of the next cycle; asked after each one, and with true when the first one is due.
        std::function<std::int64_t(bool isFirst)> nextCycle;
        std::function<void(const spa_pod& format)> formatChosen;
    };

    /// `properties` become the stream's.
    DriverNode(const char* name, pw_properties* properties, Events events);
    ~DriverNode();
    DriverNode(const DriverNode&) = delete;
    DriverNode& operator=(const DriverNode&) = delete;

    /// Connects and serves until the program is to end; the exit status.
    int run(const spa_pod** params, std::uint32_t count);
    pw_stream* stream() const { return m_stream; }
    /// Where the graph keeps its time; nothing while the node is in no graph.
    spa_io_position* position() const { return m_position; }

private:
    static void ioChanged(void* self, std::uint32_t id, void* area, std::uint32_t size);
    static void stateChanged(void* self, pw_stream_state before, pw_stream_state now, const char* error);
    static void process(void* self);
    void cycle();
    void arm(std::int64_t due);

    Events m_events;
    pw_main_loop* m_loop;
    pw_stream* m_stream = nullptr;
    spa_source* m_timer = nullptr;
    spa_io_position* m_position = nullptr;
    bool m_isStreaming = false;
    bool m_isUp = false;
    bool m_isEnding = false;
    int m_status = 0;
};

} // namespace keldra::test
