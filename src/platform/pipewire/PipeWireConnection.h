#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

struct pw_core;
struct pw_loop;

namespace keldra {

/// Keeps connected to the PipeWire daemon from a thread of its own: when the daemon is not there, or goes, it tries
/// again every now and then.
///
/// Threads: everything is told on the connection's thread, or by the destructor after that thread has ended.
class PipeWireConnection {
public:
    struct Events {
        /// Objects may be made; the loop runs what they tell.
        std::function<void(pw_core&, pw_loop&)> connected;
        /// All that was made must go now.
        std::function<void()> lost;
        /// A node is there, with its media.class.
        std::function<void(std::uint32_t node, const std::string& mediaClass)> appeared;
        std::function<void(std::uint32_t node)> vanished;
        /// After wake().
        std::function<void()> woken;
        /// When the time that callAfter() named is over.
        std::function<void()> timeIsOver;
    };

    /// Returns at once; connects later.
    explicit PipeWireConnection(Events events);
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    /// Has `woken` run. Any thread; never waits.
    void wake();
    /// Has `timeIsOver` run once; a later call takes the place of an earlier one. The connection's thread.
    void callAfter(std::chrono::nanoseconds delay);

private:
    struct Loop;
    std::unique_ptr<Loop> m_loop;
};

} // namespace keldra
