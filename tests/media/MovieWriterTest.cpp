#include "TestMovies.h"
#include "base/HostClock.h"

namespace keldra {
namespace {

using namespace test;

MediaTime micro(std::int64_t value) {
    return MediaTime(value, HostClock::timescale);
}

struct TakeRow {
    const char* name;
    MediaTime start;
    std::vector<MediaTime> times;
    MediaTime end;
    // On the file's line.
    std::vector<MediaTime> expectedTimes;
    MediaTime expectedEnd;
};

class MovieWriterTakes : public testing::TestWithParam<TakeRow> {};

TEST_P(MovieWriterTakes, KeepsStampsAndLength) {
    const TakeRow& row = GetParam();
    const TemporaryFolder folder;
    const std::string path = folder / "take.mov";
    const auto recorded = recordTake(path, row.start, row.times, row.end);
    ASSERT_TRUE(recorded) << recorded.error().message;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"take.mov"});

    const auto asset = Asset::open(path);
    ASSERT_TRUE(asset) << asset.error().message;
    ASSERT_EQ((*asset)->tracks().size(), 1u);
    const AssetTrack track = (*asset)->tracks().front();
    EXPECT_EQ(track.kind, MediaKind::video);
    EXPECT_EQ(track.codecName, "h264");
    EXPECT_EQ(track.naturalSize, (Size{pictureWidth, pictureHeight}));
    EXPECT_EQ(track.timeRange.start, row.expectedTimes.front());
    EXPECT_EQ(track.timeRange.end(), row.expectedEnd);
    EXPECT_EQ((*asset)->duration(), row.expectedEnd);

    std::vector<ShownPicture> expected;
    for (std::size_t i = 0; i < row.expectedTimes.size(); ++i)
        expected.push_back({int(i), row.expectedTimes[i]});
    EXPECT_EQ(picturesIn(path), expected);
}

std::vector<MediaTime> evenly(int count, MediaTime start, MediaTime step) {
    std::vector<MediaTime> times;
    for (int i = 0; i < count; ++i)
        times.push_back(start + step * i);
    return times;
}

INSTANTIATE_TEST_SUITE_P(
    , MovieWriterTakes,
    testing::Values(
        TakeRow{"sixtyASecond", MediaTime(7, 1), evenly(150, MediaTime(7, 1), MediaTime(1, 60)), MediaTime(19, 2),
                evenly(150, MediaTime::zero(), MediaTime(1, 60)), MediaTime(5, 2)},
        TakeRow{"oneStillPicture",
                micro(1'000'123),
                {micro(1'000'123)},
                micro(9'000'123),
                {MediaTime::zero()},
                MediaTime(8, 1)},
        TakeRow{"longHolesAndClicks",
                MediaTime(0, 600),
                {MediaTime(0, 600), MediaTime(1, 600), MediaTime(2, 600), MediaTime(3000, 600), MediaTime(3001, 600)},
                MediaTime(10, 1),
                {MediaTime(0, 600), MediaTime(1, 600), MediaTime(2, 600), MediaTime(3000, 600), MediaTime(3001, 600)},
                MediaTime(10, 1)},
        TakeRow{"lateStart", MediaTime(100, 1), evenly(90, MediaTime(20007, 200), MediaTime(1, 30)), MediaTime(104, 1),
                evenly(90, MediaTime(7, 200), MediaTime(1, 30)), MediaTime(4, 1)},
        // Nearer together than the file's ticks: moved apart by one.
        TakeRow{"microsecondsApart",
                micro(5),
                {micro(5), micro(6), micro(7), micro(1005)},
                micro(1'000'005),
                {MediaTime(0, 60000), MediaTime(1, 60000), MediaTime(2, 60000), MediaTime(60, 60000)},
                MediaTime(1, 1)},
        TakeRow{"twentyFourASecond", MediaTime(3, 1), evenly(130, MediaTime(3, 1), MediaTime(1, 24)),
                MediaTime(3, 1) + MediaTime(130, 24), evenly(130, MediaTime::zero(), MediaTime(1, 24)),
                MediaTime(130, 24)}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace keldra
