// What a project's volumes, mutes and fades become in the mix.

#include "composition/AudioPlacement.h"

#include "composition/FadeCurve.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace keldra {
namespace {

using Instructions = std::vector<AudioMixParameters::Instruction>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

MediaTimeRange seconds(double start, double duration) {
    return {MediaTime::fromSeconds(start, 60000), MediaTime::fromSeconds(duration, 60000)};
}

/// One clip of five seconds at second 1 on row 2, its voice on track 1 and its clicks on track 2.
class AudioPlacementTest : public ::testing::Test {
protected:
    AudioPlacementTest() {
        composition.addTrack(MediaKind::audio);
        composition.addTrack(MediaKind::audio);
        clip.id = QUuid::createUuid();
        clip.trackIndex = 2;
        clip.timelineStart = 1;
        clip.duration = 5;
        placements = {{1, clip.id, 2, seconds(1, 5)}, {2, {}, 2, seconds(1, 5)}};
    }
    AudioMix mix() {
        project.segments = {clip};
        return audioMix(project, composition, std::nullopt, placements).value();
    }
    Instructions voice() { return mix().parameters.at(0).instructions(); }
    Instructions clicks() { return mix().parameters.at(1).instructions(); }
    static Instructions held(float gain) { return {{seconds(1, 0), gain, gain}}; }

    Composition composition;
    EditorProject project;
    EditorSegment clip;
    QList<EditorAudioPlacementRecord> placements;
};

TEST_F(AudioPlacementTest, GainsAreGuarded) {
    const std::pair<std::optional<double>, double> rows[] = {{{}, 1}, {0.25, 0.25}, {0, 0},        {1.5, 1.5}, {2, 2},
                                                             {7, 2},  {-1, 1},      {infinity, 1}, {nan, 1}};
    for (const auto& [volume, gain] : rows) {
        clip.volume = project.clickSoundVolume = volume;
        EXPECT_EQ(voice(), held(float(gain))) << volume.value_or(-99);
        EXPECT_EQ(clicks(), held(float(gain))) << volume.value_or(-99);
    }
    clip.volume = 2;
    clip.isMuted = true;
    clip.fadeInDuration = 1;
    project.clickSoundVolume = 0.5;
    EXPECT_EQ(voice(), held(0)) << "a silent clip has no ramps";
    EXPECT_EQ(clicks(), held(0.5F)) << "clicks heed neither the clip's mute nor its fades";
    project.tracks = QList<EditorTrack>{{QUuid::createUuid(), 2, EditorTrackKind::video, true}};
    EXPECT_EQ(clicks(), held(0)) << "the row's mute silences both";
}

TEST_F(AudioPlacementTest, FadesAreTwentyFourPieces) {
    clip.volume = 0.5;
    clip.fadeInDuration = 2;
    Instructions written = voice();
    ASSERT_EQ(written.size(), 25u);
    EXPECT_EQ(written.back(), (Instructions::value_type{seconds(3, 3), 0.5F, 0.5F}));
    for (std::size_t at = 0; at < 24; ++at) {
        EXPECT_EQ(written[at].range.end(), written[at + 1].range.start) << at;
        EXPECT_EQ(written[at].endVolume, written[at + 1].startVolume) << at;
    }
    EXPECT_EQ(written[0].range.start, MediaTime(1, 1));
    EXPECT_EQ(written[0].startVolume, 0);
    EXPECT_FLOAT_EQ(written[12].startVolume, 0.25F);
    EXPECT_FLOAT_EQ(written[6].startVolume, 0.5F * 0.0625F * 2.5F);

    clip.fadeInDuration = 4;
    clip.fadeOutDuration = 4;
    written = voice();
    ASSERT_EQ(written.size(), 48u) << "fades that do not fit meet, with nothing between";
    EXPECT_EQ(written[24].range.start, MediaTime(7, 2));
    EXPECT_EQ(written[24].startVolume, 0.5F);
    EXPECT_EQ(written.back().range.end(), MediaTime(6, 1));
    EXPECT_EQ(written.back().endVolume, 0);
}

TEST_F(AudioPlacementTest, AMixIsMadeAnewFromWhatStillStands) {
    const AudioMix current{{AudioMixParameters(7)}};
    EXPECT_EQ(audioMix(project, composition, current, {}), current);
    placements.append({9, clip.id, 2, seconds(1, 5)});
    placements.append({1, QUuid::createUuid(), 2, seconds(8, 1)});
    clip.volume = 0.5;
    EXPECT_EQ(mix().parameters.size(), 2u) << "a track that is gone";
    EXPECT_EQ(voice(), held(0.5F)) << "a clip that is gone";
}

TEST(LiveClickTrack, HasTheRecordersForm) {
    const auto isOne = [](const char* codec, int channels, int rate) {
        AssetTrack track;
        track.kind = MediaKind::audio;
        track.codecName = codec;
        track.channelCount = channels;
        track.sampleRate = rate;
        return isLiveClickTrack(track);
    };
    EXPECT_TRUE(isOne("pcm_f32le", 1, 48000));
    EXPECT_TRUE(isOne("pcm_f64be", 1, 48000));
    EXPECT_FALSE(isOne("pcm_s24le", 1, 48000));
    EXPECT_FALSE(isOne("pcm_f32le", 2, 48000));
    EXPECT_FALSE(isOne("pcm_f32le", 1, 44100));
    EXPECT_FALSE(isOne("aac", 1, 48000));
}

TEST(FadeCurve, IsSmoothAndWhole) {
    const auto rising = fadeCurveSegments(true, 4, 10, 2);
    const auto falling = fadeCurveSegments(false, 4, 10, 2);
    ASSERT_EQ(rising.size(), 4);
    const double gains[] = {0, 0.15625, 0.5, 0.84375, 1};
    for (int at = 0; at < 4; ++at) {
        EXPECT_EQ(rising[at], (FadeCurveSegment{10 + at * 0.5, 0.5, gains[at], gains[at + 1]}));
        EXPECT_EQ(falling[at], (FadeCurveSegment{10 + at * 0.5, 0.5, 1 - gains[at], 1 - gains[at + 1]}));
    }
    const std::tuple<int, double, double> nothing[] = {
        {0, 0, 1}, {4, 0, 0}, {4, 0, -1}, {4, nan, 1}, {4, 0, infinity}, {4, 1.7e308, 1.7e308}, {4, 0, nan}};
    for (const auto& [steps, start, duration] : nothing)
        EXPECT_TRUE(fadeCurveSegments(true, steps, start, duration).isEmpty())
            << steps << " " << start << " " << duration;
}

} // namespace
} // namespace keldra
