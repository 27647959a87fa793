#include "composition/EditorCompositionBuilder.h"
#include "composition/Tasks.h"
#include "composition/TimelineIntervals.h"
#include "media/FrameGenerator.h"
#include "media/TestMovies.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace test;
using test::finish;
using test::SteppedClock;

/// The project's frames, with files opened at once.
Result<std::unique_ptr<FrameGenerator>> framesOf(const EditorProject& project) {
    PumpedExecutor main;
    const AssetLoader open = [&main](const std::string& path, Completion<AssetPtr> done) {
        main.post([path, done] { done(Asset::open(path)); });
    };
    const EditorCompositionBuilder builder(open, MainTurn(main, std::make_shared<SteppedClock>()));
    TRY_LET(const EditorCompositionOutput output, finish(builder.build(project), main));
    return std::make_unique<FrameGenerator>(output.composition, output.videoComposition.value());
}

/// A canvas of the picture's size with the given clips and nothing around them.
EditorProject plainProject(QList<EditorSegment> clips) {
    EditorProject project;
    project.frameRate = 30;
    project.canvasWidth = pictureWidth;
    project.canvasHeight = pictureHeight;
    project.segments = std::move(clips);
    return project;
}

EditorSegment clipOf(const std::string& path, double start, double duration) {
    EditorSegment clip;
    clip.id = QUuid::createUuid();
    clip.sourceURL = QUrl::fromLocalFile(QString::fromStdString(path));
    clip.timelineStart = start;
    clip.duration = duration;
    return clip;
}

int shownAt(FrameGenerator& frames, MediaTime time) {
    const auto frame = frames.frameAt(time);
    EXPECT_TRUE(frame) << (frame ? "" : frame.error().message);
    return frame ? numberIn(*frame) : -1;
}

bool hasEncoder(const std::string& name) {
    const std::string command = "ffmpeg -v error -hide_banner -encoders | grep -q ' " + name + " '";
    return std::system(command.c_str()) == 0;
}

struct Codec {
    const char* name;
    const char* encoder;
    const char* file;
    const char* options;
    /// The container's clock holds every frame's time.
    bool isExact = true;
};

struct Rate {
    const char* name;
    const char* rate;
    const char* filter;
    MediaTime (*timeOf)(int number);
};

using Row = std::tuple<Codec, Rate>;
class MovieFrames : public ::testing::TestWithParam<Row> {};

TEST_P(MovieFrames, FrameNOfTheFileIsFrameNOnTheCanvas) {
    constexpr int count = 30;
    const auto& [codec, rate] = GetParam();
    if (!hasEncoder(codec.encoder))
        GTEST_SKIP() << "this ffmpeg has no encoder " << codec.encoder;
    const TemporaryFolder folder;
    const std::string path = folder / codec.file;
    // Twice as many are painted, for every rate; the encoder takes what it needs.
    runFfmpeg(paintedSource(rate.rate, 4) + "-vf " + rate.filter + " -vsync passthrough -enc_time_base -1 -frames:v " +
              std::to_string(count) + " -c:v " + codec.encoder + " " + codec.options + " '" + path + "'");

    const auto frames = framesOf(plainProject({clipOf(path, 0, 10)}));
    ASSERT_TRUE(frames) << frames.error().message;
    std::vector<int> order;
    for (int number = 0; number < count; ++number)
        order.push_back(number);
    for (int number = count - 1; number >= 0; number -= 4)
        order.push_back(number);
    for (const int number : order) {
        const MediaTime start = rate.timeOf(number);
        const MediaTime middle = start + MediaTime(1, 150);
        if (codec.isExact) {
            ASSERT_EQ(shownAt(**frames, start), number) << "at its very start";
        }
        ASSERT_EQ(shownAt(**frames, middle), number);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , MovieFrames,
    ::testing::Combine(
        ::testing::Values(
            Codec{"h264", "libx264", "a.mp4", "-bf 2 -g 12 -pix_fmt yuv420p -video_track_timescale 600000"},
            Codec{"h264TenBits", "libx264", "a.mov", "-g 12 -pix_fmt yuv420p10le -video_track_timescale 600000"},
            Codec{"hevc", "libx265", "a.mp4",
                  "-x265-params log-level=none:keyint=12 -pix_fmt yuv420p -video_track_timescale 600000"},
            Codec{"hevcTenBits", "libx265", "a.mp4",
                  "-x265-params log-level=none:keyint=12 -pix_fmt yuv420p10le -video_track_timescale 600000"},
            Codec{"vp9", "libvpx-vp9", "a.webm", "-deadline realtime -cpu-used 8 -g 12 -b:v 2M", false},
            Codec{"av1", "libaom-av1", "a.mp4",
                  "-usage realtime -cpu-used 8 -g 12 -b:v 2M -video_track_timescale 600000"},
            Codec{"prores", "prores_ks", "a.mov", "-pix_fmt yuv422p10le -video_track_timescale 600000"},
            Codec{"mjpeg", "mjpeg", "a.mov", "-q:v 2 -pix_fmt yuvj420p -video_track_timescale 600000"}),
        ::testing::Values(
            Rate{"23976", "24000/1001", "null", [](int number) { return MediaTime(number * 1001, 24000); }},
            Rate{"25", "25", "null", [](int number) { return MediaTime(number, 25); }},
            Rate{"2997", "30000/1001", "null", [](int number) { return MediaTime(number * 1001, 30000); }},
            Rate{"5994", "60000/1001", "null", [](int number) { return MediaTime(number * 1001, 60000); }},
            Rate{"variable", "30", "'settb=1/600,setpts=20*N+7*mod(N*N\\,3)'",
                 [](int number) { return MediaTime(20 * number + 7 * (number * number % 3), 600); }})),
    [](const auto& row) { return std::string(std::get<0>(row.param).name) + "At" + std::get<1>(row.param).name; });

TEST(TurnedMovie, ArrivesUpright) {
    const TemporaryFolder folder;
    runFfmpeg("-f lavfi -i color=red:s=128x64:r=10:d=0.5,drawbox=w=64:h=64:color=blue:t=fill -c:v libx264 -qp 1 '" +
              (folder / "flat.mp4") + "'");
    // The program means a quarter turn to the left: the right end becomes the top.
    runFfmpeg("-i '" + (folder / "flat.mp4") + "' -c copy -metadata:s:v rotate=90 '" + (folder / "turned.mp4") + "'");
    EditorProject project = plainProject({clipOf(folder / "turned.mp4", 0, 1)});
    project.canvasWidth = 64;
    project.canvasHeight = 128;
    const auto frames = framesOf(project);
    ASSERT_TRUE(frames) << frames.error().message;
    const auto frame = (*frames)->frameAt(MediaTime::zero());
    ASSERT_TRUE(frame) << frame.error().message;
    const auto reddest = [&](int x, int y) { return frame->row(0, y)[4 * x + 2] > frame->row(0, y)[4 * x]; };
    for (const int x : {0, 32, 63}) {
        EXPECT_TRUE(reddest(x, 0) && reddest(x, 60));
        EXPECT_FALSE(reddest(x, 67) || reddest(x, 127));
    }
}

class BadMovies : public ::testing::Test {
protected:
    void SetUp() override {
        runFfmpeg(paintedSource(30, 2) + "-c:v libx264 -g 10 -bf 0 -qp 10 -pix_fmt yuv420p '" + good + "'");
    }
    TemporaryFolder folder;
    const std::string good = folder / "good.mp4";
};

MediaTime frameTime(double seconds) {
    return MediaTime::fromSeconds(seconds + 1 / 60.0, timelineTimescale);
}

TEST_F(BadMovies, ADamagedFileInMidTimelineIsPlayedAround) {
    std::vector<char> bytes = bytesOf(good);
    for (std::size_t at = bytes.size() / 4; at < bytes.size() / 2; ++at)
        bytes[at] = char(at * 31);
    writeBytes(folder / "damaged.mp4", bytes);
    const auto frames =
        framesOf(plainProject({clipOf(good, 0, 1), clipOf(folder / "damaged.mp4", 1, 2), clipOf(good, 3, 1)}));
    ASSERT_TRUE(frames) << frames.error().message;
    for (int number = 0; number < 120; ++number) {
        const int shown = shownAt(**frames, frameTime(number / 30.0));
        if (number < 30 || number >= 90) {
            ASSERT_EQ(shown, number % 30);
        }
    }
}

TEST_F(BadMovies, AFileThatVanishesAfterTheBuildIsNamed) {
    const auto frames = framesOf(plainProject({clipOf(good, 0, 1)}));
    ASSERT_TRUE(frames);
    std::filesystem::remove(good);
    EXPECT_EQ((*frames)->frameAt(MediaTime::zero()).error().message, "good.mp4: No such file or directory");
}

TEST_F(BadMovies, AContainerThatClaimsALongerTimeShowsItsLastPicture) {
    runFfmpeg("-i '" + good + "' -c copy '" + (folder / "long.mkv") + "'");
    std::vector<char> bytes = bytesOf(folder / "long.mkv");
    // Matroska's duration: an eight byte float of milliseconds. 2^20 takes its first two bytes.
    const std::string kind = "\x44\x89\x88";
    const auto duration = std::search(bytes.begin(), bytes.end(), kind.begin(), kind.end());
    ASSERT_NE(duration, bytes.end());
    std::fill_n(duration + 3, 8, char(0));
    *(duration + 3) = 0x41;
    *(duration + 4) = 0x30;
    writeBytes(folder / "long.mkv", bytes);
    const auto frames = framesOf(plainProject({clipOf(folder / "long.mkv", 0, 5000)}));
    ASSERT_TRUE(frames) << frames.error().message;
    EXPECT_EQ(shownAt(**frames, frameTime(1)), 30);
    for (const double late : {1000.0, 20.0})
        EXPECT_EQ(shownAt(**frames, frameTime(late)), 59);
}

TEST_F(BadMovies, MoreClipsThanOpenFilesAreStillAllShown) {
    // Each clip shows one picture of the file, in a stack; whichever is on top for its moment is seen.
    QList<EditorSegment> clips;
    constexpr int depth = 24;
    for (int number = 0; number < depth; ++number) {
        EditorSegment clip = clipOf(good, number / 10.0, depth / 10.0);
        clip.sourceStart = 0.5;
        clip.trackIndex = number;
        clips.append(clip);
    }
    const auto frames = framesOf(plainProject(clips));
    ASSERT_TRUE(frames) << frames.error().message;
    for (const int moment : {0, 5, 23, 22, 12})
        for (const int later : {0, 1, 2})
            EXPECT_EQ(shownAt(**frames, frameTime(moment / 10.0 + later / 30.0)), 15 + later) << moment;
}

} // namespace
} // namespace keldra
