#include "base/SerialQueue.h"

#include <atomic>
#include <condition_variable>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

namespace keldra {
namespace {

using namespace std::chrono_literals;

TEST(SerialQueue, RunsWorkOfManyThreadsOneAtATimeAndInEachThreadsOrder) {
    SerialQueue queue("test.queue");
    constexpr int perThread = 500;
    std::vector<std::pair<int, int>> seen;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < perThread; ++i)
                queue.post([&, thread, i] { seen.emplace_back(thread, i); });
        });
    for (auto& thread : threads)
        thread.join();
    queue.sync([] {});

    ASSERT_EQ(seen.size(), 4u * perThread);
    std::vector<int> next(4, 0);
    for (const auto& [thread, i] : seen)
        EXPECT_EQ(i, next[thread]++);
}

TEST(SerialQueue, RefusesBeyondItsBoundButAlwaysTakesControlWork) {
    std::promise<void> gate;
    std::promise<void> entered;
    SerialQueue queue("test.bounded", 2);
    queue.post([&] {
        entered.set_value();
        gate.get_future().wait();
    });
    entered.get_future().wait();

    int ran = 0;
    EXPECT_TRUE(queue.tryPost([&] { ++ran; }));
    EXPECT_TRUE(queue.tryPost([&] { ++ran; }));
    EXPECT_FALSE(queue.tryPost([&] { ran += 100; }));
    queue.post([&] { ++ran; });
    gate.set_value();
    queue.sync([] {});
    EXPECT_EQ(ran, 3);
    EXPECT_TRUE(queue.tryPost([] {}));
}

TEST(SerialQueue, SyncOnTheQueueItselfRunsAtOnce) {
    SerialQueue queue("test.nested");
    std::vector<int> order;
    queue.sync([&] {
        queue.post([&] { order.push_back(3); });
        queue.sync([&] { order.push_back(1); });
        order.push_back(2);
        EXPECT_TRUE(queue.isCurrent());
    });
    queue.sync([] {});
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
    EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialQueue, RunsWhatWasQueuedBeforeItEnds) {
    std::atomic<int> ran = 0;
    {
        SerialQueue queue("test.drain");
        for (int i = 0; i < 100; ++i)
            queue.post([&] { ++ran; });
    }
    EXPECT_EQ(ran, 100);
}

TEST(SerialQueue, RepeatsOnItsDueTimesUntilCancelled) {
    SerialQueue queue("test.repeat");
    std::mutex lock;
    std::condition_variable changed;
    std::vector<std::chrono::steady_clock::time_point> runs;
    const auto start = std::chrono::steady_clock::now();
    Timer timer = queue.every(4ms, [&] {
        const std::lock_guard guard(lock);
        runs.push_back(std::chrono::steady_clock::now());
        changed.notify_one();
    });
    {
        std::unique_lock guard(lock);
        ASSERT_TRUE(changed.wait_for(guard, 10s, [&] { return runs.size() >= 10; }));
    }
    queue.sync([&] { timer.cancel(); });
    const std::size_t atCancel = runs.size();
    queue.sync([] {});
    EXPECT_EQ(runs.size(), atCancel);
    EXPECT_FALSE(timer);
    // Never early, whatever the machine's load.
    for (std::size_t i = 0; i < runs.size(); ++i)
        EXPECT_GE(runs[i] - start, 4ms * (i + 1));
}

TEST(SerialQueue, ATimerMayCancelItselfAndOutliveItsQueue) {
    Timer survivor;
    int runs = 0;
    {
        std::promise<void> ran;
        Timer timer;
        SerialQueue queue("test.self");
        queue.sync([&] {
            timer = queue.every(1ms, [&] {
                ++runs;
                timer.cancel();
                ran.set_value();
            });
        });
        ASSERT_EQ(ran.get_future().wait_for(10s), std::future_status::ready);
        survivor = queue.every(1h, [] {});
    }
    EXPECT_EQ(runs, 1);
    survivor.cancel();
}

} // namespace
} // namespace keldra
