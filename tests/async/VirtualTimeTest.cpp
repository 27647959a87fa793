#include "doubles/VirtualTime.h"

#include "async/AwaitCompletion.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace keldra {
namespace {

using namespace std::chrono_literals;

TEST(VirtualTime, MovesClockQueuesAndSchedulerWithOneHand) {
    VirtualTime time;
    const MediaTime start = time.clock()->now();
    std::vector<std::string> seen;
    const auto note = [&](const std::string& what) {
        const MediaTime elapsed = time.clock()->now() - start;
        seen.push_back(what + "@" + std::to_string(elapsed.value() / 1000));
    };
    Executor& capture = time.queue("capture");
    const Timer ticks = capture.every(16ms, [&] {
        EXPECT_TRUE(capture.isCurrent());
        note("tick");
        time.mainQueue().post([&] { note("hop"); });
    });
    const Timer once = time.scheduler().after(20ms, [&] { note("once"); });

    time.advance(40ms);
    EXPECT_EQ(seen, (std::vector<std::string>{"tick@16", "hop@16", "once@20", "tick@32", "hop@32"}));
    EXPECT_EQ((time.clock()->now() - start), MediaTime(40, 1000));
}

TEST(VirtualTime, RunsPostedWorkOfAllQueuesInOrderAndRespectsBounds) {
    VirtualTime time;
    Executor& bounded = time.queue("bounded", 1);
    std::vector<int> order;
    time.mainQueue().post([&] {
        order.push_back(1);
        bounded.post([&] { order.push_back(3); });
    });
    EXPECT_TRUE(bounded.tryPost([&] { order.push_back(2); }));
    EXPECT_FALSE(bounded.tryPost([&] { order.push_back(99); }));
    EXPECT_TRUE(order.empty());
    time.settle();
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(VirtualTime, ForgetsCancelledTimersEvenFromTheirOwnWork) {
    VirtualTime time;
    int runs = 0;
    Timer self = time.scheduler().every(1ms, [&] {
        if (++runs == 3)
            self.cancel();
    });
    time.advance(10ms);
    EXPECT_EQ(runs, 3);
}

QCoro::Task<> sleepTwice(Scheduler& scheduler, std::vector<int>& steps) {
    steps.push_back(0);
    co_await scheduler.sleep(10ms);
    steps.push_back(1);
    co_await scheduler.sleep(10ms);
    steps.push_back(2);
}

TEST(Scheduler, SleepsExactlyAsLongAsAsked) {
    VirtualTime time;
    std::vector<int> steps;
    auto task = sleepTwice(time.scheduler(), steps);
    time.advance(9ms);
    EXPECT_EQ(steps, (std::vector{0}));
    time.advance(1ms);
    EXPECT_EQ(steps, (std::vector{0, 1}));
    time.advance(10ms);
    EXPECT_EQ(steps, (std::vector{0, 1, 2}));
    EXPECT_TRUE(task.isReady());
}

QCoro::Task<Result<int>> addOne(Executor& executor, Result<int> answer) {
    Result<int> value =
        co_await awaitCompletion<int>([&](Completion<int> done) { executor.post([done, answer] { done(answer); }); });
    if (!value)
        co_return value;
    co_return *value + 1;
}

TEST(AwaitCompletion, ResumesWithTheAnswerOrTheError) {
    VirtualTime time;
    auto good = addOne(time.mainQueue(), 41);
    auto bad = addOne(time.mainQueue(), fail(Error{"test", 1, "no", {}}));
    EXPECT_FALSE(good.isReady());
    time.settle();
    int checked = 0;
    good.then([&](Result<int> result) {
        EXPECT_EQ(result, 42);
        ++checked;
    });
    bad.then([&](Result<int> result) {
        EXPECT_EQ(result.error().message, "no");
        ++checked;
    });
    EXPECT_EQ(checked, 2);
}

TEST(AwaitCompletion, AnAnswerAfterTheWaiterIsGoneDoesNothing) {
    Completion<int> kept;
    {
        CompletionAwaiter<int> awaiter([&](Completion<int> done) { kept = std::move(done); });
        awaiter.await_suspend(std::noop_coroutine());
    }
    kept(1);
}

} // namespace
} // namespace keldra
