#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

struct pw_context;
struct pw_stream;
struct pw_thread_loop;
struct spa_hook;

namespace keldra::test {

/// Hears what the default output of this session's PipeWire plays.
class Listener {
public:
    /// One frame, and when it was heard (nanoseconds of host time).
    struct Frame {
        float left = 0;
        float right = 0;
        std::int64_t heardAt = 0;
    };

    Listener();
    ~Listener();

    bool isConnected() const { return m_stream != nullptr; }
    /// All frames that were not silent, in order.
    std::vector<Frame> heard() const;
    void forget();

private:
    void process();

    pw_thread_loop* m_loop;
    pw_context* m_context = nullptr;
    pw_stream* m_stream = nullptr;
    std::unique_ptr<spa_hook> m_hook;
    mutable std::mutex m_lock;
    std::vector<Frame> m_heard;
};

} // namespace keldra::test
