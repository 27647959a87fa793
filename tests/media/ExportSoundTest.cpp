// What an export writes when a composition sounds.

#include "Compositors.h"
#include "TestSound.h"
#include "media/ExportSession.h"

namespace keldra {
namespace {

using namespace test;
using namespace std::chrono_literals;

class ExportSoundTest : public testing::Test {
protected:
    void SetUp() override {
        writeWav(folder / "clicks.wav", clicks(6, {4800, 72000, 240000}, 48000, 2));
        const auto opened = Asset::open(folder / "clicks.wav");
        ASSERT_TRUE(opened);
        sound = *opened;
    }

    void placeSound(MediaTime duration, MediaTime at = MediaTime::zero()) {
        const auto placed =
            composition->addTrack(MediaKind::audio).insertTimeRange({MediaTime::zero(), duration}, sound, 0, at);
        ASSERT_TRUE(placed) << placed.error().message;
    }

    VideoComposition background() const {
        VideoComposition video;
        video.renderWidth = pictureWidth;
        video.renderHeight = pictureHeight;
        video.frameDuration = MediaTime(1, 30);
        video.instructions = {showing({}, MediaTime::zero(), composition->duration())};
        video.makeCompositor = [] { return std::make_unique<CopyingCompositor>(); };
        return video;
    }

    Result<void> exported(std::optional<VideoComposition> video, std::optional<AudioMix> mix = std::nullopt) {
        ExportSession session(composition, std::move(video), std::move(mix));
        std::promise<Result<void>> ended;
        session.start(target, answer, [&](Result<void> result) { ended.set_value(std::move(result)); });
        auto future = ended.get_future();
        if (future.wait_for(60s) != std::future_status::ready)
            return fail(Error{"test", 3, "The export did not end.", {}});
        const Result<void> result = future.get();
        progress = session.progress();
        return result;
    }

    TemporaryFolder folder;
    std::string target = folder / "out.mp4";
    AssetPtr sound;
    std::shared_ptr<Composition> composition = std::make_shared<Composition>();
    SerialQueue answer{"test.answer"};
    float progress = 0;
};

TEST_F(ExportSoundTest, IsInTimeToTheSampleAndAsLongAsTheComposition) {
    // An end within a frame of picture and within a packet of sound.
    const MediaTime length(321111, 60000);
    placeSound(length);
    for (const bool hasPicture : {true, false}) {
        std::filesystem::remove(target);
        const auto result = exported(hasPicture ? std::optional(background()) : std::nullopt);
        ASSERT_TRUE(result) << result.error().message;
        EXPECT_EQ(progress, 1);
        const auto asset = Asset::open(target);
        ASSERT_TRUE(asset) << asset.error().message;
        EXPECT_EQ((*asset)->tracks(MediaKind::video).size(), hasPicture ? 1u : 0u);
        const auto tracks = (*asset)->tracks(MediaKind::audio);
        ASSERT_EQ(tracks.size(), 1u);
        EXPECT_EQ(tracks[0].codecName, "aac");
        EXPECT_EQ(std::pair(tracks[0].sampleRate, tracks[0].channelCount), std::pair(48000, 2));
        EXPECT_EQ(tracks[0].timeRange.start, MediaTime::zero());
        EXPECT_NEAR(tracks[0].timeRange.duration.seconds(), length.seconds(), 1.0 / 48000);

        const ReadSound heard = readWhole(target);
        EXPECT_EQ(heard.first, 0);
        EXPECT_EQ(heard.frameCount(), firstSampleAt(length, 48000));
        EXPECT_EQ(loudestFrame(heard, 0, 30000), 4800);
        EXPECT_EQ(loudestFrame(heard, 30000, 150000), 72000);
        EXPECT_EQ(loudestFrame(heard, 150000), 240000);
        // Another program's decoder agrees on where zero is.
        runFfmpeg("-i '" + target + "' -c:a pcm_f32le '" + (folder / "judged.wav") + "'");
        EXPECT_EQ(loudestFrame(readWhole(folder / "judged.wav"), 30000, 150000), 72000);
    }
}

TEST_F(ExportSoundTest, HasTheGainsOfTheMixAndIsClippedAtFullScale) {
    writeWav(folder / "tone.wav", glidingTones(2, 48000, 2, 0.9F));
    sound = *Asset::open(folder / "tone.wav");
    placeSound(MediaTime(2, 1));
    AudioMix mix{{AudioMixParameters(1)}};
    mix.parameters[0].setVolume(2, MediaTime::zero());
    mix.parameters[0].setVolume(0, MediaTime(1, 1));
    ASSERT_TRUE(exported(std::nullopt, mix));
    const ReadSound heard = readWhole(target);
    // 1.8 as mixed; the codec overshoots a little.
    EXPECT_NEAR(std::abs(heard.at(loudestFrame(heard, 0, 47000))), 1.2, 0.3);
    for (std::int64_t n = 50000; n < 90000; ++n)
        ASSERT_NEAR(heard.at(n), 0, 1e-3) << n;
}

TEST_F(ExportSoundTest, WritesPacketsInTheOrderOfTime) {
    placeSound(MediaTime(5, 1));
    ASSERT_TRUE(exported(background()));
    const std::string list = folder / "packets.txt";
    const std::string command =
        "ffprobe -v error -show_entries packet=dts_time,pos -of csv=p=0 '" + target + "' > '" + list + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::vector<std::pair<long, double>> packets;
    std::ifstream lines(list);
    for (std::string line; std::getline(lines, line);)
        if (line.find_first_not_of("-.,0123456789") == std::string::npos && line.find(',') < line.size() - 1)
            packets.emplace_back(std::stol(line.substr(line.find(',') + 1)), std::stod(line));
    ASSERT_GT(packets.size(), 300u);
    std::sort(packets.begin(), packets.end());
    for (std::size_t i = 1; i < packets.size(); ++i)
        ASSERT_GT(packets[i].second, packets[i - 1].second - 0.1) << "packet " << i;
}

TEST_F(ExportSoundTest, FailsByNameAndLeavesNothingWhenASourceIsGone) {
    placeSound(MediaTime(5, 1));
    std::filesystem::remove(folder / "clicks.wav");
    for (const bool hasPicture : {true, false}) {
        const auto result = exported(hasPicture ? std::optional(background()) : std::nullopt);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().message, "clicks.wav: No such file or directory");
        EXPECT_TRUE(folder.names().empty());
    }
}

TEST_F(ExportSoundTest, CanBeCancelledWhileItSounds) {
    placeSound(MediaTime(5, 1));
    std::promise<Result<void>> ended;
    ExportSession session(composition, std::nullopt);
    session.start(target, answer, [&](Result<void> result) { ended.set_value(std::move(result)); });
    session.cancel();
    auto future = ended.get_future();
    ASSERT_EQ(future.wait_for(60s), std::future_status::ready);
    if (!future.get()) {
        EXPECT_EQ(session.status(), ExportSession::Status::cancelled);
        EXPECT_EQ(folder.names(), std::vector<std::string>{"clicks.wav"});
    }
}

} // namespace
} // namespace keldra
