#include "base/MediaTime.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace keldra {
namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

TEST(MediaTime, ComparesExactlyWhereDoublesCannot) {
    EXPECT_EQ(MediaTime(1, 2), MediaTime(2, 4));
    EXPECT_LT(MediaTime(largest - 1, 3), MediaTime(largest, 3));
    EXPECT_LT(MediaTime(largest - 1, 2147483647), MediaTime(largest, 2147483647));
    EXPECT_GT(MediaTime(1, 3), MediaTime(333333333, 1000000000));
    EXPECT_LT(MediaTime(-1, 3), MediaTime::zero());
}

TEST(MediaTime, OrdersNumbersBeforeIndefiniteBeforeInvalid) {
    EXPECT_LT(MediaTime(largest, 1), MediaTime::indefinite());
    EXPECT_LT(MediaTime::indefinite(), MediaTime::invalid());
    EXPECT_EQ(MediaTime::invalid(), MediaTime());
    EXPECT_FALSE(MediaTime(1, 0).isValid());
}

struct SumRow {
    const char* name;
    MediaTime a;
    MediaTime b;
    MediaTime sum;
    bool isRounded;
};

class MediaTimeSum : public testing::TestWithParam<SumRow> {};

TEST_P(MediaTimeSum, IsExactOrNearestAndFlagged) {
    const SumRow& row = GetParam();
    for (const MediaTime& sum : {row.a + row.b, row.b + row.a}) {
        EXPECT_EQ(sum, row.sum) << sum.description();
        EXPECT_EQ(sum.wasRounded(), row.isRounded) << sum.description();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MediaTimeSum,
    testing::Values(
        SumRow{"sameScale", {1, 600}, {2, 600}, {3, 600}, false},
        SumRow{"microsecondsAndFrames", {1'000'001, 1'000'000}, {1, 600}, {3'000'003 + 5'000, 3'000'000}, false},
        SumRow{"reducesToFit", {1, 2147483647}, {-1, 2147483647}, {0, 1}, false},
        SumRow{"primeScales", {1, 2147483647}, {1, 2147483629}, {2, 2147483647}, true},
        SumRow{"largeValueKeepsExact", {largest - 1, 2}, {1, 2}, {largest, 2}, false},
        SumRow{"commonFactorSavesOverflow", {largest - 1, 2}, {largest - 1, 2}, {largest - 1, 1}, false},
        SumRow{"tooLarge", {largest, 1}, {largest, 1}, MediaTime::indefinite(), false},
        SumRow{"indefiniteStays", MediaTime::indefinite(), {1, 1}, MediaTime::indefinite(), false},
        SumRow{"invalidWins", MediaTime::invalid(), MediaTime::indefinite(), MediaTime::invalid(), false}),
    [](const auto& instance) { return instance.param.name; });

TEST(MediaTime, RoundingFlagTravelsThroughArithmetic) {
    const MediaTime rounded = MediaTime(1, 3).converted(1000);
    EXPECT_EQ(rounded, MediaTime(333, 1000));
    EXPECT_TRUE(rounded.wasRounded());
    EXPECT_TRUE((rounded + MediaTime(1, 1)).wasRounded());
    EXPECT_TRUE((rounded * 2).wasRounded());
    EXPECT_FALSE(MediaTime(1, 3).converted(3'000'000).wasRounded());
}

TEST(MediaTime, ConvertsToNearestWithHalvesAwayFromZero) {
    EXPECT_EQ(MediaTime(1, 2).converted(1), MediaTime(1, 1));
    EXPECT_EQ(MediaTime(-1, 2).converted(1), MediaTime(-1, 1));
    EXPECT_EQ(MediaTime(49, 100).converted(1), MediaTime(0, 1));
    EXPECT_TRUE(MediaTime(largest, 1).converted(2).isIndefinite());
}

TEST(MediaTime, TakesSecondsToTheNearestTick) {
    EXPECT_EQ(MediaTime::fromSeconds(1.0 / 30, 60000), MediaTime(2000, 60000));
    EXPECT_EQ(MediaTime::fromSeconds(0.1, 60000), MediaTime(6000, 60000));
    EXPECT_FALSE(MediaTime::fromSeconds(std::numeric_limits<double>::quiet_NaN(), 60000).isValid());
    EXPECT_TRUE(MediaTime::fromSeconds(std::numeric_limits<double>::infinity(), 60000).isIndefinite());
    EXPECT_TRUE(MediaTime::fromSeconds(1e30, 60000).isIndefinite());
}

TEST(MediaTime, SumsAndDifferencesOfRandomTimesUndoEachOther) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::int64_t> value(-1'000'000'000'000, 1'000'000'000'000);
    const std::int32_t scales[] = {1, 24, 600, 48000, 60000, 90000, 1'000'000};
    std::uniform_int_distribution<int> scale(0, 6);
    for (int i = 0; i < 2000; ++i) {
        const MediaTime a(value(random), scales[scale(random)]);
        const MediaTime b(value(random), scales[scale(random)]);
        ASSERT_EQ((a + b) - b, a) << "seed " << seed << ": " << a.description() << ", " << b.description();
        ASSERT_EQ(a<b, (b - a)> MediaTime::zero()) << "seed " << seed;
    }
}

TEST(MediaTimeRange, IsHalfOpen) {
    const MediaTimeRange first{{0, 1}, {1, 1}};
    const MediaTimeRange second{{1, 1}, {1, 1}};
    EXPECT_FALSE(first.overlaps(second));
    EXPECT_TRUE(first.contains({0, 1}));
    EXPECT_FALSE(first.contains({1, 1}));
    EXPECT_TRUE(first.intersection(second).isEmpty());
    EXPECT_EQ(first.intersection({{1, 2}, {4, 1}}), (MediaTimeRange{{1, 2}, {1, 2}}));
    EXPECT_TRUE((MediaTimeRange{{0, 1}, MediaTime::invalid()}).isEmpty());
}

} // namespace
} // namespace keldra
