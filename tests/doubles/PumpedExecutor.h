#pragma once

#include "base/Executor.h"
#include "base/Result.h"

#include <cassert>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace keldra {

/// A main thread in a test: what is posted runs while the test's own thread waits in pumpUntil().
class PumpedExecutor final : public Executor {
public:
    static constexpr std::chrono::seconds patience{10};
    static std::chrono::steady_clock::time_point deadline() { return std::chrono::steady_clock::now() + patience; }

    void post(Work work) override {
        const std::lock_guard guard(m_lock);
        m_waiting.push_back(std::move(work));
        m_arrived.notify_one();
    }
    bool tryPost(Work work) override {
        post(std::move(work));
        return true;
    }
    void sync(const Work& work) override {
        assert(isCurrent());
        work();
    }
    /// Repeats run in fire() only.
    Timer every(Duration, Work work) override {
        auto repeat = std::make_shared<Work>(std::move(work));
        m_repeats.push_back(repeat);
        return Timer([repeat]() mutable { repeat.reset(); });
    }
    /// Runs each repeat once.
    void fire() {
        const auto repeats = m_repeats;
        for (const auto& weak : repeats)
            if (const auto repeat = weak.lock())
                (*repeat)();
    }
    bool isCurrent() const override { return std::this_thread::get_id() == m_thread; }

    /// Runs what is posted until the predicate holds; false when that takes too long.
    template <typename Predicate>
    [[nodiscard]] bool pumpUntil(Predicate predicate) {
        const auto end = deadline();
        std::unique_lock guard(m_lock);
        while (true) {
            guard.unlock();
            const bool isDone = predicate();
            guard.lock();
            if (isDone)
                return true;
            if (std::chrono::steady_clock::now() > end)
                return false;
            if (!m_arrived.wait_until(guard, end, [this] { return !m_waiting.empty(); }))
                return false;
            const Work work = std::move(m_waiting.front());
            m_waiting.pop_front();
            guard.unlock();
            work();
            guard.lock();
        }
    }

    /// What `begin`, given a completion, is answered. Nothing answers before the call returns.
    template <typename T, typename Begin>
    Result<T> answerOf(Begin begin) {
        std::optional<Result<T>> answer;
        begin(Completion<T>([&](Result<T> result) { answer = std::move(result); }));
        EXPECT_FALSE(answer) << "never before the call returns";
        EXPECT_TRUE(pumpUntil([&] { return answer.has_value(); }));
        return answer.value_or(fail(Error{}));
    }

private:
    const std::thread::id m_thread = std::this_thread::get_id();
    std::mutex m_lock;
    std::condition_variable m_arrived;
    std::deque<Work> m_waiting;
    std::vector<std::weak_ptr<Work>> m_repeats;
};

} // namespace keldra
