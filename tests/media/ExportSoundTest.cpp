// What an export writes when a composition sounds.

#include "ExportFixture.h"

namespace keldra {
namespace {

using namespace test;

class ExportSoundTest : public ExportFixture {
protected:
    void SetUp() override { useSound(clicks(6, {4800, 72000, 240000}, 48000, 2)); }

    void useSound(const TestSound& samples) {
        writeWav(folder / "sound.wav", samples);
        sound = Asset::open(folder / "sound.wav").value();
    }
    void placeSound(MediaTime duration) {
        place(composition->addTrack(MediaKind::audio), sound, {MediaTime::zero(), duration});
    }
    std::optional<VideoComposition> background() const {
        return copying({}, composition->duration(), MediaTime(1, 30));
    }

    AssetPtr sound;
};

TEST_F(ExportSoundTest, IsInTimeToTheSampleAndAsLongAsTheComposition) {
    // An end within a frame of picture and within a packet of sound.
    const MediaTime length(321111, 60000);
    placeSound(length);
    for (const bool hasPicture : {true, false}) {
        std::filesystem::remove(target);
        ASSERT_EQ(failureOf(hasPicture ? background() : std::nullopt), "");
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
    useSound(glidingTones(2, 48000, 2, 0.9F));
    placeSound(MediaTime(2, 1));
    AudioMix mix{{AudioMixParameters(1)}};
    mix.parameters[0].setVolume(2, MediaTime::zero());
    mix.parameters[0].setVolume(0, MediaTime(1, 1));
    ASSERT_EQ(failureOf(std::nullopt, mix), "");
    const ReadSound heard = readWhole(target);
    // 1.8 as mixed; the codec overshoots a little.
    EXPECT_NEAR(std::abs(heard.at(loudestFrame(heard, 0, 47000))), 1.2, 0.3);
    for (std::int64_t n = 50000; n < 90000; ++n)
        ASSERT_NEAR(heard.at(n), 0, 1e-3) << n;
}

TEST_F(ExportSoundTest, WritesPacketsInTheOrderOfTime) {
    placeSound(MediaTime(5, 1));
    ASSERT_EQ(failureOf(background()), "");
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
    std::filesystem::remove(folder / "sound.wav");
    for (const bool hasPicture : {true, false}) {
        EXPECT_EQ(failureOf(hasPicture ? background() : std::nullopt), "sound.wav: No such file or directory");
        EXPECT_TRUE(folder.names().empty());
    }
}

} // namespace
} // namespace keldra
