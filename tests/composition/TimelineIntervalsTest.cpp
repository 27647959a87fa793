#include "composition/TimelineIntervals.h"

#include "doubles/Clips.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace keldra {
namespace {

using test::clip;
using test::id;

/// "0-60000:1,2 ..." in ticks of the timeline and numbers of clips.
std::string text(const QList<EditorInstructionInterval>& intervals) {
    std::string all;
    for (const EditorInstructionInterval& interval : intervals) {
        const auto ticks = [](MediaTime time) { return std::to_string(time.converted(timelineTimescale).value()); };
        all += (all.empty() ? "" : " ") + ticks(interval.timeRange.start) + "-" + ticks(interval.timeRange.end()) + ":";
        for (const QUuid& clipID : interval.activeSegmentIDs)
            all += clipID.toString(QUuid::WithoutBraces).mid(24).toInt() + '0';
    }
    return all;
}

MediaTime seconds(double value) {
    return MediaTime::fromSeconds(value, timelineTimescale);
}

TEST(TimelineIntervals, CutWhereClipsChange) {
    struct Row {
        const char* name;
        QList<EditorSegment> clips;
        double duration;
        std::string expected;
    };
    const Row rows[] = {
        {"one clip", {clip(1, 0, 1)}, 1, "0-60000:1"},
        {"touching", {clip(1, 0, 1), clip(2, 1, 1)}, 2, "0-60000:1 60000-120000:2"},
        {"a gap at the start", {clip(1, 1, 1)}, 2, "0-60000: 60000-120000:1"},
        {"a gap between", {clip(1, 0, 1), clip(2, 2, 1)}, 3, "0-60000:1 60000-120000: 120000-180000:2"},
        {"sound outlasts the picture", {clip(1, 0, 1)}, 3, "0-60000:1 60000-180000:"},
        {"cut at the end", {clip(1, 0, 9)}, 2, "0-120000:1"},
        {"starts after the end", {clip(1, 0, 1), clip(2, 5, 1)}, 1, "0-60000:1"},
        {"higher rows first", {clip(1, 0, 2, 0), clip(2, 0, 2, 3), clip(3, 0, 2, 1)}, 2, "0-120000:231"},
        {"later starts first on one row", {clip(1, 0, 2), clip(2, 1, 1)}, 2, "0-60000:1 60000-120000:21"},
        {"then by id", {clip(3, 0, 1), clip(1, 0, 1), clip(2, 0, 1)}, 1, "0-60000:123"},
        {"before zero counts as zero", {clip(1, -5, 6)}, 1, "0-60000:1"},
        {"not placed, no length", {clip(9, 0, 1), clip(1, 0, 0)}, 1, "0-60000:"},
        {"nothing", {}, 0, ""},
        {"no time", {clip(1, 0, 1)}, -1, ""},
    };
    for (const Row& row : rows) {
        const QSet<QUuid> placed{id(1), id(2), id(3)};
        const auto intervals = timelineIntervals(row.clips, placed, seconds(row.duration));
        EXPECT_EQ(text(intervals), row.expected) << row.name;
        EXPECT_TRUE(areContinuous(intervals, seconds(row.duration))) << row.name;
    }
    EXPECT_TRUE(timelineIntervals({clip(1, 0, 1)}, {id(1)}, MediaTime::indefinite()).isEmpty());
}

TEST(TimelineIntervals, TimesAreGuarded) {
    EXPECT_EQ(timelineTime(1.5).value(), 90000);
    for (const double bad :
         {-3.0, 0.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(timelineTime(bad), MediaTime::zero()) << bad;
}

TEST(TimelineIntervals, AnythingElseThanAnUnbrokenRowIsRefused) {
    const auto interval = [](double start, double end) {
        return EditorInstructionInterval{{seconds(start), seconds(end) - seconds(start)}, {}};
    };
    struct Row {
        const char* name;
        QList<EditorInstructionInterval> intervals;
        double duration;
        bool expected;
    };
    const Row rows[] = {
        {"unbroken", {interval(0, 1), interval(1, 3)}, 3, true},
        {"a hole", {interval(0, 1), interval(2, 3)}, 3, false},
        {"an overlap", {interval(0, 2), interval(1, 3)}, 3, false},
        {"starts late", {interval(1, 3)}, 3, false},
        {"ends early", {interval(0, 2)}, 3, false},
        {"ends late", {interval(0, 4)}, 3, false},
        {"an empty one", {interval(0, 1), interval(1, 1), interval(1, 3)}, 3, false},
        {"none for some time", {}, 3, false},
        {"none for no time", {}, 0, true},
        {"some for no time", {interval(0, 1)}, 0, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(areContinuous(row.intervals, seconds(row.duration)), row.expected) << row.name;
}

TEST(TimelineIntervals, TileTheTimelineWhateverTheClips) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937_64 random(seed);
        std::uniform_real_distribution<double> time(-1, 20);
        QList<EditorSegment> clips;
        QSet<QUuid> placed;
        for (int number = 1; number < 30; ++number) {
            clips.append(clip(number, time(random), time(random) / 3, qint64(random() % 4)));
            if (random() % 5)
                placed.insert(id(number));
        }
        const MediaTime duration = timelineTime(time(random));
        const auto intervals = timelineIntervals(clips, placed, duration);
        ASSERT_TRUE(areContinuous(intervals, duration)) << "seed " << seed;
        for (const EditorInstructionInterval& interval : intervals)
            for (const EditorSegment& segment : clips) {
                const bool isActive = placed.contains(segment.id) && segment.duration > 0 &&
                                      timelineTime(segment.timelineStart) < interval.timeRange.end() &&
                                      interval.timeRange.start < timelineTime(segment.timelineEnd());
                ASSERT_EQ(interval.activeSegmentIDs.count(segment.id), isActive ? 1 : 0) << "seed " << seed;
            }
    }
}

} // namespace
} // namespace keldra
