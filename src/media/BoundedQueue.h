#pragma once

#include "base/Recycling.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace keldra {

/// Hands things from one thread to another, a few at a time: who is ahead waits. Any thread.
template <typename T>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t capacity) : m_capacity(capacity) {}

    /// Waits for a free place. False when stopped; the thing is dropped then.
    [[nodiscard]] bool push(T thing) {
        std::unique_lock guard(m_lock);
        m_hasRoom.wait(guard, [this] { return m_isStopped || m_things.size() < m_capacity; });
        if (m_isStopped)
            return false;
        m_things.push_back(std::move(thing));
        guard.unlock();
        m_hasThings.notify_one();
        return true;
    }
    /// Nothing more comes: who pops gets what is left.
    void finish() {
        const std::lock_guard guard(m_lock);
        m_isFinished = true;
        m_hasThings.notify_all();
    }
    /// Waits for the next thing. Nothing when all is taken, or when stopped.
    [[nodiscard]] std::optional<T> pop() {
        std::unique_lock guard(m_lock);
        m_hasThings.wait(guard, [this] { return m_isStopped || m_isFinished || !m_things.empty(); });
        if (m_isStopped || m_things.empty())
            return std::nullopt;
        std::optional<T> thing(std::move(m_things.front()));
        m_things.pop_front();
        guard.unlock();
        m_hasRoom.notify_one();
        return thing;
    }
    /// Ends all waiting and drops what is inside.
    void stop() {
        Things dropped;
        const std::lock_guard guard(m_lock);
        m_isStopped = true;
        dropped.swap(m_things);
        m_hasThings.notify_all();
        m_hasRoom.notify_all();
    }

private:
    using Things = std::deque<T, Recycling<T>>;

    const std::size_t m_capacity;
    std::mutex m_lock;
    std::condition_variable m_hasRoom;
    std::condition_variable m_hasThings;
    Things m_things;
    bool m_isFinished = false;
    bool m_isStopped = false;
};

} // namespace keldra
