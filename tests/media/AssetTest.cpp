#include "TestMovies.h"

#include <algorithm>
#include <cmath>
#include <sys/stat.h>
#include <unistd.h>

namespace keldra {
namespace {

using namespace test;

struct TrackRow {
    const char* name;
    const char* file;
    /// Of the ffmpeg program, before the file.
    std::string arguments;
    const char* codec;
    double frameRate = 30;
    double duration = 2;
    double start = 0;
    double width = 128;
    double height = 64;
};

class AssetTracks : public testing::TestWithParam<TrackRow> {};

TEST_P(AssetTracks, AreDescribed) {
    const TrackRow& row = GetParam();
    const TemporaryFolder folder;
    runFfmpeg(row.arguments + "'" + (folder / row.file) + "'");
    const auto asset = Asset::open(folder / row.file);
    ASSERT_TRUE(asset) << asset.error().message;
    const auto tracks = (*asset)->tracks(MediaKind::video);
    ASSERT_EQ(tracks.size(), 1u);
    const AssetTrack& track = tracks.front();
    EXPECT_EQ(track.naturalSize, (Size{row.width, row.height}));
    EXPECT_NEAR(track.nominalFrameRate, row.frameRate, 0.01);
    EXPECT_NEAR(track.timeRange.start.seconds(), row.start, 0.001);
    EXPECT_NEAR(track.timeRange.duration.seconds(), row.duration, 0.001);
    EXPECT_EQ(track.codecName, row.codec);
    const auto first = TrackReader::open(*asset, track.index, {}).value()->next();
    ASSERT_TRUE(first && *first);
    const PixelBuffer& picture = (**first).pixels;
    EXPECT_EQ((Size{double(picture.width()), double(picture.height())}), track.naturalSize) << "pixels are square";
}

const std::string painted = paintedSource(30, 2);
const std::string slower = paintedSource(25, 2);
const std::string h264 = "-c:v libx264 -bf 0 -pix_fmt yuv420p ";

INSTANTIATE_TEST_SUITE_P(
    , AssetTracks,
    testing::Values(
        TrackRow{"mp4WithReordering", "a.mp4", painted + "-c:v libx264 -bf 3 -pix_fmt yuv420p ", "h264"},
        TrackRow{"wideLikeAnOldBroadcast", "a.mov", slower + "-c:v mpeg4 -vf setsar=16/11 ", "mpeg4", 25, 2, 0, 186},
        TrackRow{"oddSize", "a.mov", paintedSource(24, 2, "141x53") + "-c:v mpeg4 ", "mpeg4", 24, 2, 0, 141, 53},
        TrackRow{"fragments", "a.mp4", painted + h264 + "-g 15 -movflags frag_keyframe+empty_moov ", "h264"},
        TrackRow{"startsLate", "a.mov",
                 "-itsoffset 0.5 " + painted + "-f lavfi -i anullsrc=d=3 -vsync passthrough -c:a pcm_s16le " + h264,
                 "h264", 30, 2, 0.5},
        TrackRow{"broadcastClock", "a.ts", slower + h264 + "-output_ts_offset 1000 ", "h264", 25},
        TrackRow{"matroska", "a.mkv", painted + "-c:v libx264 -bf 2 -pix_fmt yuv420p ", "h264"},
        TrackRow{"stillPicture", "a.png", slower + "-frames:v 1 ", "png", 25, 5},
        TrackRow{"photographNamedLikeAPattern", "a%03d.jpg", slower + "-frames:v 1 -update 1 -f mjpeg ", "mjpeg", 25,
                 5}),
    [](const auto& row) { return row.param.name; });

TEST(Asset, ListsSoundTracksInOrderAndLastsAsLongAsTheLongest) {
    const TemporaryFolder folder;
    runFfmpeg(paintedSource(30, 1) + "-f lavfi -i sine=d=2.5:r=48000 -f lavfi -i anullsrc=d=1:r=44100:cl=stereo " +
              "-map 0 -map 1 -map 2 -c:v libx264 -pix_fmt yuv420p -c:a:0 pcm_f32le -c:a:1 pcm_s24le '" +
              (folder / "a.mov") + "'");
    const auto asset = Asset::open(folder / "a.mov");
    ASSERT_TRUE(asset) << asset.error().message;
    const auto sounds = (*asset)->tracks(MediaKind::audio);
    ASSERT_EQ(sounds.size(), 2u);
    EXPECT_EQ(std::tuple(sounds[0].codecName, sounds[0].sampleRate, sounds[0].channelCount),
              std::tuple("pcm_f32le", 48000, 1));
    EXPECT_EQ(std::tuple(sounds[1].codecName, sounds[1].sampleRate, sounds[1].channelCount),
              std::tuple("pcm_s24le", 44100, 2));
    EXPECT_NEAR((*asset)->duration().seconds(), 2.5, 0.001);
}

TEST(Asset, CoverArtIsNoPictureTrack) {
    const TemporaryFolder folder;
    for (const char* name : {"a.mp3", "a.m4a", "a.flac"}) {
        runFfmpeg("-f lavfi -i sine=d=1 -f lavfi -i color=red:s=64x64:d=0.04 -map 0 -map 1 -c:v mjpeg "
                  "-disposition:v attached_pic '" +
                  (folder / name) + "'");
        const auto asset = Asset::open(folder / name);
        ASSERT_TRUE(asset) << asset.error().message;
        EXPECT_EQ((*asset)->tracks(MediaKind::video).size(), 0u) << name;
        EXPECT_EQ((*asset)->tracks(MediaKind::audio).size(), 1u) << name;
    }
}

TEST(Asset, SaysWhyAFileIsNotAMovie) {
    const TemporaryFolder folder;
    runFfmpeg(paintedSource(30, 1) + "-c:v libx264 -pix_fmt yuv420p '" + (folder / "whole.mov") + "'");
    const std::vector<char> whole = bytesOf(folder / "whole.mov");
    ASSERT_GT(whole.size(), 1000u);
    // The index of this file is at its end.
    writeBytes(folder / "truncated.mov", {whole.begin(), whole.begin() + std::ptrdiff_t(whole.size() / 2)});
    writeBytes(folder / "empty.mov", {});
    const std::string text = "Once upon a time there was a text.\n";
    writeBytes(folder / "text.txt", {text.begin(), text.end()});
    const std::string playlist = "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nwhole.mov\n#EXT-X-ENDLIST\n";
    writeBytes(folder / "list.m3u8", {playlist.begin(), playlist.end()});
    std::filesystem::create_directory(folder / "folder.mov");
    ASSERT_EQ(::mkfifo((folder / "pipe.mov").c_str(), 0600), 0);

    const std::vector<std::pair<std::string, std::string>> rows{
        {"missing.mov", "missing.mov: No such file or directory"},
        {"folder.mov", "folder.mov: Is a directory"},
        {"empty.mov", "empty.mov is not a movie that can be read: The file is empty"},
        {"pipe.mov", "pipe.mov is not a movie that can be read: It is not a regular file"},
        {"truncated.mov", "truncated.mov is not a movie that can be read: Invalid data found when processing input"},
        {"text.txt", "text.txt is not a movie that can be read: Invalid data found when processing input"},
        {"list.m3u8", "list.m3u8 is not a movie that can be read: Invalid data found when processing input"},
    };
    testing::internal::CaptureStderr();
    for (const auto& [name, words] : rows) {
        const auto asset = Asset::open(folder / name);
        ASSERT_FALSE(asset) << name;
        EXPECT_EQ(asset.error().message, words);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    // A name is a name, whatever it looks like.
    std::filesystem::copy(folder / "whole.mov", folder / "http:whole.mov");
    EXPECT_TRUE(Asset::open(folder / "http:whole.mov"));
}

TEST(Asset, LoadsOnOneQueueAndAnswersOnAnother) {
    const TemporaryFolder folder;
    std::promise<std::string> promise;
    SerialQueue answer("test.answer");
    SerialQueue worker("test.worker");
    Asset::load(folder / "missing.mov", worker, answer, [&](Result<AssetPtr> result) {
        promise.set_value(answer.isCurrent() && !result ? result.error().message : "wrong");
    });
    auto future = promise.get_future();
    ASSERT_EQ(future.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(future.get(), "missing.mov: No such file or directory");
}

} // namespace
} // namespace keldra
