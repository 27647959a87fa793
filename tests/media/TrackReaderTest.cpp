#include "TestMovies.h"

#include <cmath>
#include <random>

namespace keldra {
namespace {

using namespace test;

std::unique_ptr<TrackReader> openPictures(const std::string& path, TrackReader::Options options = {}) {
    const AssetPtr asset = Asset::open(path).value();
    return TrackReader::open(asset, asset->tracks(MediaKind::video).front().index, options).value();
}

/// The next picture; none after a failure, which is told.
PixelBuffer nextPicture(TrackReader& reader) {
    const auto frame = reader.next();
    EXPECT_TRUE(frame && *frame) << (frame ? "no more" : frame.error().message);
    return frame && *frame ? (**frame).pixels : PixelBuffer();
}

PixelBuffer pictureAt(TrackReader& reader, MediaTime time) {
    const auto sought = reader.seek(time);
    EXPECT_TRUE(sought) << (sought ? "" : sought.error().message);
    return nextPicture(reader);
}

struct MovieRow {
    const char* name;
    std::string file;
    std::string arguments;
    std::string size = "128x64";
};

class TrackReaderMovies : public testing::TestWithParam<MovieRow> {
protected:
    static constexpr int rate = 30;
    static constexpr int count = 75;

    void SetUp() override {
        const MovieRow& row = GetParam();
        path = folder / row.file;
        runFfmpeg(paintedSource(rate, double(count) / rate, row.size) + row.arguments + "'" + path + "'");
    }

    TemporaryFolder folder;
    std::string path;
};

TEST_P(TrackReaderMovies, GiveEveryPictureInOrderInEitherFormat) {
    for (const PixelFormat format : {PixelFormat::bgra, PixelFormat::i420}) {
        const auto shown = picturesIn(path, {format, 2});
        ASSERT_EQ(shown.size(), std::size_t(count));
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(shown[std::size_t(i)].number, i);
            EXPECT_NEAR(shown[std::size_t(i)].time.seconds(), double(i) / rate, 0.0011);
        }
    }
}

TEST_P(TrackReaderMovies, ShowThePictureOfAnyTimeSought) {
    for (const int threads : {1, 2}) {
        const auto reader = openPictures(path, {PixelFormat::i420, threads});
        std::mt19937 random(7);
        std::vector<double> times{0, 2.49, 100, -1, 1.0, 1.0, 1.02, 1.05, 1.5, 0.5, 2.0, 2.1, 2.2, 0.0};
        for (int i = 0; i < 60; ++i)
            times.push_back(random() % 2500 / 1000.0);
        for (const double time : times) {
            // Away from the edges: containers round times to a millisecond.
            const double inside = std::floor(time * rate) / rate + 0.5 / rate;
            const int expected = std::clamp(int(std::floor(time * rate)), 0, count - 1);
            const PixelBuffer picture = pictureAt(*reader, MediaTime::fromSeconds(inside, 60000));
            ASSERT_TRUE(picture);
            EXPECT_EQ(numberIn(picture), expected) << "sought " << time;
            if (expected + 1 < count) {
                const PixelBuffer following = nextPicture(*reader);
                ASSERT_TRUE(following);
                EXPECT_EQ(numberIn(following), expected + 1) << "after " << time;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    , TrackReaderMovies,
    testing::Values(
        MovieRow{"bFramesAndLongGroups", "a.mp4", "-c:v libx264 -bf 3 -g 60 -pix_fmt yuv420p "},
        MovieRow{"openGroups", "a.mp4", "-c:v libx264 -bf 2 -g 12 -x264-params open-gop=1 -pix_fmt yuv420p "},
        MovieRow{"fragmentsWithBFrames", "a.mov",
                 "-c:v libx264 -bf 2 -g 15 -pix_fmt yuv420p -movflags frag_keyframe+default_base_moof+delay_moov "},
        MovieRow{"everyFrameAKey", "a.mov", "-c:v mjpeg -q:v 2 -pix_fmt yuvj420p "},
        MovieRow{"tenBits", "a.mp4", "-c:v libx265 -x265-params log-level=none:keyint=20 -pix_fmt yuv420p10le "},
        MovieRow{"fourFourFour", "a.mp4", "-c:v libx264 -g 20 -pix_fmt yuv444p "},
        MovieRow{"oddSizeOldCodec", "a.mov", "-c:v mpeg4 -q:v 2 -g 10 ", "141x53"},
        MovieRow{"rgb", "a.mov", "-c:v qtrle -pix_fmt rgb24 -g 10 "},
        MovieRow{"transparent", "a.mov", "-c:v qtrle -pix_fmt argb -g 10 "},
        MovieRow{"matroska", "a.mkv", "-c:v libx264 -bf 2 -g 25 -pix_fmt yuv420p "},
        MovieRow{"webm", "a.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 25 -b:v 2M "},
        MovieRow{"broadcast", "a.ts", "-c:v libx264 -bf 2 -g 15 -pix_fmt yuv420p -output_ts_offset 500 "},
        MovieRow{"avi", "a.avi", "-c:v mpeg4 -q:v 2 -g 12 "}),
    [](const auto& row) { return row.param.name; });

TEST(TrackReader, GivesATakesPicturesAtTheirIrregularTimes) {
    const TemporaryFolder folder;
    const std::vector<MediaTime> times{MediaTime(0, 600),   MediaTime(10, 600),  MediaTime(11, 600),
                                       MediaTime(12, 600),  MediaTime(700, 600), MediaTime(1900, 600),
                                       MediaTime(1901, 600)};
    ASSERT_TRUE(recordTake(folder / "take.mov", MediaTime::zero(), times, MediaTime(4, 1)));
    const auto reader = openPictures(folder / "take.mov");
    // Every tick of the recorder's clock, up and then down.
    const auto onScreenAt = [&](int tick) {
        int shown = 0;
        while (std::size_t(shown) + 1 < times.size() && times[std::size_t(shown) + 1] <= MediaTime(tick, 600))
            ++shown;
        return shown;
    };
    std::vector<int> ticks;
    for (int tick = 0; tick < 2000; ++tick)
        ticks.push_back(tick);
    for (int tick = 2399; tick >= 0; tick -= 7)
        ticks.push_back(tick);
    const std::uint8_t* lastPixels = nullptr;
    int lastShown = -1;
    for (const int tick : ticks) {
        const PixelBuffer picture = pictureAt(*reader, MediaTime(tick, 600));
        ASSERT_TRUE(picture);
        const int expected = onScreenAt(tick);
        ASSERT_EQ(numberIn(picture), expected) << "tick " << tick;
        // A picture that still stands is the same pixels: nobody composes it again.
        if (expected == lastShown && tick < 2000 && tick > 0) {
            ASSERT_EQ(picture.data(), lastPixels) << "tick " << tick;
        }
        lastPixels = picture.data();
        lastShown = expected;
    }
}

TEST(TrackReader, HonoursEditLists) {
    const TemporaryFolder folder;
    runFfmpeg(paintedSource(30, 2) + "-c:v libx264 -bf 2 -g 30 -pix_fmt yuv420p '" + (folder / "whole.mp4") + "'");
    // A copy from the middle of a group keeps the frames before the cut and hides them by an edit list.
    runFfmpeg("-ss 0.5 -i '" + (folder / "whole.mp4") + "' -c copy '" + (folder / "cut.mp4") + "'");
    const auto shown = picturesIn(folder / "cut.mp4");
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown.front(), (ShownPicture{15, MediaTime::zero()}));
    EXPECT_EQ(shown.size(), 45u);
    const auto reader = openPictures(folder / "cut.mp4");
    for (const int number : {40, 16, 59, 15}) {
        const PixelBuffer picture = pictureAt(*reader, MediaTime(2 * (number - 15) + 1, 60));
        ASSERT_TRUE(picture);
        EXPECT_EQ(numberIn(picture), number);
    }
}

struct ColourRow {
    const char* name;
    std::string arguments;
    bool hasFinerChroma = false;
};

class TrackReaderColours : public testing::TestWithParam<ColourRow> {};

TEST_P(TrackReaderColours, ComeOutAsTheyWentIn) {
    const TemporaryFolder folder;
    const std::string path = folder / "a.mov";
    runFfmpeg("-f lavfi -i color=0x2060c0:s=64x64:r=10:d=0.3,format=gbrp " + GetParam().arguments + "'" + path + "'");
    for (const PixelFormat wanted : {PixelFormat::bgra, PixelFormat::i420}) {
        const PixelFormat format = GetParam().hasFinerChroma ? PixelFormat::bgra : wanted;
        const PixelBuffer picture = nextPicture(*openPictures(path, {wanted, 1}));
        ASSERT_TRUE(picture);
        ASSERT_EQ(picture.format(), format);
        // 0x2060c0 in BT.709 limited: computed by hand from the standard's formula.
        const std::vector<int> expected =
            format == PixelFormat::bgra ? std::vector{0xc0, 0x60, 0x20, 0xff} : std::vector{93, 177, 96};
        std::vector<int> actual;
        for (std::size_t i = 0; i < expected.size(); ++i)
            actual.push_back(format == PixelFormat::bgra ? picture.row(0, 20)[4 * 20 + i]
                                                         : picture.row(int(i), 10)[10]);
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_NEAR(actual[i], expected[i], 3) << "component " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    , TrackReaderColours,
    testing::Values(
        ColourRow{"bt709", "-vf scale=out_color_matrix=bt709,format=yuv420p -colorspace bt709 -c:v libx264 -qp 1 "},
        ColourRow{"bt709Full", "-vf scale=out_color_matrix=bt709:out_range=pc,format=yuv420p -colorspace bt709 "
                               "-color_range pc -c:v libx264 -qp 1 "},
        ColourRow{"bt601", "-vf scale=out_color_matrix=bt601,format=yuv420p -colorspace smpte170m -c:v libx264 -qp 1 "},
        ColourRow{"untaggedSmall", "-vf scale=out_color_matrix=bt601,format=yuv420p -c:v libx264 -qp 1 "},
        ColourRow{"bt2020TenBits", "-vf scale=out_color_matrix=bt2020,format=yuv420p10le -colorspace bt2020nc -c:v "
                                   "libx264 -qp 1 "},
        ColourRow{"bt709FourTwoTwo",
                  "-vf scale=out_color_matrix=bt709,format=yuv422p -colorspace bt709 -c:v libx264 "
                  "-qp 1 ",
                  true},
        ColourRow{"rgb", "-c:v qtrle -pix_fmt rgb24 ", true}),
    [](const auto& row) { return row.param.name; });

TEST(TrackReader, NamesWhatIsMissing) {
    const TemporaryFolder folder;
    runFfmpeg("-f lavfi -i sine=d=1 '" + (folder / "sound.wav") + "'");
    const auto asset = Asset::open(folder / "sound.wav");
    ASSERT_TRUE(asset) << asset.error().message;
    EXPECT_EQ(TrackReader::open(*asset, 0, {}).error().message, "sound.wav has no picture track 0");
    std::filesystem::remove(folder / "sound.wav");
    EXPECT_EQ(TrackReader::open(*asset, 0, {}).error().message, "sound.wav: No such file or directory");
}

} // namespace
} // namespace keldra
