#pragma once

#include "platform/pipewire/PipeWireNode.h"

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
    /// Each may be missing.
    struct Events {
        /// Objects may be made; the loop runs what they tell.
        std::function<void(pw_core&, pw_loop&)> connected = {};
        /// All that was made must go now.
        std::function<void()> lost = {};
        /// A node with a media.class is there.
        std::function<void(const PipeWireNode&)> appeared = {};
        std::function<void(std::uint32_t node)> vanished = {};
        /// The desktop's choice, such as "default.audio.source", as the JSON text that says which; empty when it has
        /// none any more.
        std::function<void(const std::string& key, const std::string& value)> chosen = {};
        /// All nodes and choices that were there at the connection have been told.
        std::function<void()> listed = {};
        /// There is no daemon now.
        std::function<void()> unreachable = {};
        /// After wake().
        std::function<void()> woken = {};
        /// When the time that callAfter() named is over.
        std::function<void()> timeIsOver = {};
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
