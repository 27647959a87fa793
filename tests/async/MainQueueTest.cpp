#include "async/MainQueue.h"

#include "async/MainScheduler.h"
#include "base/HostClock.h"
#include "base/SerialQueue.h"
#include "doubles/Waiting.h"

#include <gtest/gtest.h>
#include <optional>
#include <vector>

namespace keldra {
namespace {

using namespace std::chrono_literals;

using test::runUntil;

TEST(MainQueue, RunsWorkOfOtherThreadsInOrderOnTheMainThread) {
    MainQueue main(std::make_shared<MainScheduler>());
    std::vector<int> seen;
    SerialQueue worker("test.worker");
    worker.post([&] {
        for (int i = 0; i < 100; ++i)
            main.post([&, i] {
                EXPECT_TRUE(main.isCurrent());
                seen.push_back(i);
            });
    });
    EXPECT_TRUE(runUntil([&] { return seen.size() == 100; }));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(seen[std::size_t(i)], i);
}

TEST(MainQueue, NeverRunsWorkBeforePostReturns) {
    MainQueue main(std::make_shared<MainScheduler>());
    bool ran = false;
    main.post([&] { ran = true; });
    EXPECT_FALSE(ran);
    EXPECT_TRUE(runUntil([&] { return ran; }));
}

TEST(MainScheduler, KeepsExactDueTimesThatMillisecondsCannotHold) {
    MainScheduler scheduler;
    const SystemHostClock clock;
    const MediaTime start = clock.now();
    int runs = 0;
    std::optional<MediaTime> end;
    Timer timer = scheduler.every(std::chrono::nanoseconds(8'333'333), [&] {
        const MediaTime elapsed = clock.now() - start;
        EXPECT_GE(elapsed, MediaTime(++runs * 8'333LL, 1'000'000));
        if (runs == 24) {
            end = clock.now();
            timer.cancel();
        }
    });
    // Runs that come a whole period late are left out on a busy machine, so only "never early" holds for sure.
    EXPECT_TRUE(runUntil([&] { return end.has_value(); }));
    EXPECT_FALSE(timer);
}

TEST(MainScheduler, AfterRunsOnceAndNotAtAllWhenDropped) {
    MainScheduler scheduler;
    int dropped = 0;
    int ran = 0;
    {
        const Timer gone = scheduler.after(1ms, [&] { ++dropped; });
    }
    const Timer kept = scheduler.after(2ms, [&] { ++ran; });
    EXPECT_TRUE(runUntil([&] { return ran == 1; }));
    EXPECT_EQ(dropped, 0);
}

} // namespace
} // namespace keldra
