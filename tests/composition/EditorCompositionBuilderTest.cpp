#include "composition/EditorCompositionBuilder.h"

#include "composition/EditorCompositorInstruction.h"
#include "composition/Tasks.h"
#include "composition/TimelineIntervals.h"
#include "composition/ToldAssets.h"
#include "doubles/Clips.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace keldra {
namespace {

using test::id;

using test::audioTrack;
using test::finish;
using test::SteppedClock;
using test::ToldAssets;
using test::videoTrack;

class BuilderTest : public ::testing::Test {
protected:
    BuilderTest() {
        files.add("/a.mov", {audioTrack(0, 0, 10), videoTrack(1, 0, 10)});
        files.add("/silent.mov", {videoTrack(1, 0, 10)});
        files.add("/b.mov", {videoTrack(0, 0, 10, {360, 640})});
        files.add("/sound.wav", {audioTrack(0, 0, 10)});
        project.sourceURL = QUrl::fromLocalFile("/a.mov");
        project.frameRate = 30;
        project.canvasWidth = 640;
        project.canvasHeight = 360;
    }

    EditorSegment& addClip(int number, double start, double duration, qint64 row = 0, double sourceStart = 0) {
        project.segments.append(test::clip(number, start, duration, row));
        project.segments.last().sourceStart = sourceStart;
        return project.segments.last();
    }
    EditorCompositionBuilder builder() { return {files.loader(), MainTurn(main, clock)}; }
    Result<EditorCompositionOutput> build() { return finish(builder().build(project), main); }
    static const EditorCompositorInstruction& instruction(const VideoComposition& video, std::size_t at) {
        return dynamic_cast<const EditorCompositorInstruction&>(*video.instructions.at(at));
    }
    /// The instruction's tracks, top first.
    static std::vector<int> layerTracks(const VideoComposition& video, std::size_t at) {
        std::vector<int> tracks;
        for (const auto& layer : instruction(video, at).layers)
            tracks.push_back(layer.trackID);
        EXPECT_EQ(video.instructions[at]->requiredSourceTrackIDs,
                  std::vector<std::int32_t>(tracks.begin(), tracks.end()));
        return tracks;
    }

    PumpedExecutor main;
    std::shared_ptr<SteppedClock> clock = std::make_shared<SteppedClock>();
    ToldAssets files{main};
    EditorProject project;
};

TEST_F(BuilderTest, ClipsShareTracksAsFarAsTheyDoNotOverlap) {
    project.sourceURL = QUrl::fromLocalFile("/silent.mov");
    addClip(1, 0, 2, 0);
    addClip(2, 1, 2, 1);
    addClip(3, 1.5, 1, 5);
    addClip(4, 2, 1, 0);
    addClip(5, 2.5, 1, 0);
    const auto output = build().value();
    const auto& ids = output.videoTrackIDsBySegment;
    EXPECT_EQ(ids.size(), 5);
    const std::vector<int> tracks{ids[id(1)], ids[id(2)], ids[id(3)], ids[id(4)], ids[id(5)]};
    // The fourth touches the first and takes its track; the fifth takes the first that is free.
    EXPECT_EQ(tracks, (std::vector<int>{1, 2, 3, 1, 3}));
    EXPECT_EQ(output.composition->tracks().size(), 3u);
    EXPECT_EQ(output.composition->duration(), MediaTime(7, 2));

    const VideoComposition& video = *output.videoComposition;
    EXPECT_EQ(layerTracks(video, 0), std::vector<int>{1});
    EXPECT_EQ(layerTracks(video, 2), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(video.instructions[2]->timeRange, (MediaTimeRange{MediaTime(3, 2), MediaTime(1, 2)}));
    EXPECT_EQ(layerTracks(video, 3), (std::vector<int>{3, 2, 1}));
    EXPECT_FALSE(output.audioMix);
    EXPECT_EQ(files.openCount["/silent.mov"], 1);
}

TEST_F(BuilderTest, PiecesAreWhatTheMediaHolds) {
    addClip(1, 1, 30, 0, 4);
    addClip(2, 40, 1, 0, 2);
    addClip(3, 5, 1, 1, 99);
    const auto output = build().value();
    EXPECT_EQ(output.videoTrackIDsBySegment.size(), 2) << "what lies beyond the media places nothing";
    const auto& segments = output.composition->track(1)->segments();
    ASSERT_EQ(segments.size(), 2u);
    EXPECT_EQ(segments[0].source, (MediaTimeRange{MediaTime(4, 1), MediaTime(6, 1)}));
    EXPECT_EQ(segments[0].target, MediaTime(1, 1));
    EXPECT_EQ(segments[0].trackIndex, 1);
    // The clip keeps its place on the timeline although its picture ends early.
    const VideoComposition& video = *output.videoComposition;
    ASSERT_EQ(video.instructions.size(), 4u);
    EXPECT_TRUE(instruction(video, 0).layers.isEmpty());
    EXPECT_EQ(video.instructions[1]->timeRange, (MediaTimeRange{MediaTime(1, 1), MediaTime(30, 1)}));
    EXPECT_TRUE(instruction(video, 2).layers.isEmpty());
}

TEST_F(BuilderTest, MediaIsShownWhereItLiesInItsFile) {
    AssetTrack still = videoTrack(0, 0, 5);
    still.isStill = true;
    AssetTrack oddTicks = videoTrack(0, 0, 0);
    oddTicks.timeRange = {MediaTime(1, 1'000'003), MediaTime(1'000'001, 1'000'003)};
    struct Row {
        const char* name;
        AssetTrack track;
        double sourceStart;
        MediaTimeRange piece;
        MediaTime target;
    };
    const auto ticks = [](int value) { return MediaTime(value, timelineTimescale); };
    // Each clip takes a second of its file, three seconds into the timeline.
    const Row rows[] = {
        {"whole", videoTrack(0, 0, 9), 2, {ticks(120'000), ticks(60'000)}, ticks(180'000)},
        {"starts late", videoTrack(0, 0.5, 9), 0, {ticks(30'000), ticks(30'000)}, ticks(210'000)},
        {"starts late, cut further in", videoTrack(0, 0.5, 9), 0.75, {ticks(45'000), ticks(60'000)}, ticks(180'000)},
        {"ends early", videoTrack(0, 0, 2.5), 2, {ticks(120'000), ticks(30'000)}, ticks(180'000)},
        {"a still stands for as long as is wanted", still, 7, {ticks(420'000), ticks(60'000)}, ticks(180'000)},
        {"ticks that no timeline holds", oddTicks, 0, {ticks(1), ticks(59'998)}, ticks(180'001)},
    };
    for (const Row& row : rows) {
        project.segments.clear();
        files.add("/row.mov", {row.track});
        addClip(1, 3, 1, 0, row.sourceStart).sourceURL = QUrl::fromLocalFile("/row.mov");
        addClip(2, 4, 1);
        const auto output = build();
        ASSERT_TRUE(output) << row.name << output.error().message;
        const auto& segments = output->composition->track(1)->segments();
        ASSERT_EQ(segments.size(), 2u) << row.name << ": the clip that touches it shares its track";
        EXPECT_EQ(segments[0].source, row.piece) << row.name;
        EXPECT_EQ(segments[0].target, row.target) << row.name;
        EXPECT_EQ(output->videoComposition->instructions[1]->timeRange, (MediaTimeRange{ticks(180'000), ticks(60'000)}))
            << row.name << ": the clip keeps its whole range";
    }
}

TEST_F(BuilderTest, ALongBuildGivesTheMainLoopItsTurns) {
    for (int number = 0; number < 100; ++number)
        addClip(number, number, 1);
    const auto unbroken = build().value();
    // Every look at the clock takes a millisecond: four clips or instructions a turn.
    clock->step = 1000;
    int turns = 0;
    const auto answer = finish(builder().build(project), main, &turns);
    EXPECT_GE(turns, 200 / 4);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->videoTrackIDsBySegment, unbroken.videoTrackIDsBySegment);
    EXPECT_EQ(answer->videoComposition->instructions.size(), 100u);
    EXPECT_EQ(files.openCount["/a.mov"], 2) << "once a build";
}

TEST_F(BuilderTest, EverySoundOfAFileIsPlacedInTime) {
    AssetTrack clicks = audioTrack(2, 0, 10, 1);
    clicks.codecName = "pcm_f32le";
    files.add("/take.mov", {videoTrack(0, 0, 10), audioTrack(1, 0.5, 3), clicks});
    project.sourceURL = QUrl::fromLocalFile("/take.mov");
    project.hasLiveClickTrack = true;
    project.tracks = QList<EditorTrack>{{id(90), 1, EditorTrackKind::audio, false}};
    addClip(1, 0, 2);
    addClip(2, 1, 1, 1, 6);
    addClip(3, 2, 1, 0, 1);
    const auto output = build().value();
    const Composition& composition = *output.composition;
    EXPECT_EQ(output.videoTrackIDsBySegment.size(), 2) << "a row of sounds shows nothing";
    EXPECT_EQ(composition.tracks().size(), 4u);

    const MediaTimeRange first{MediaTime::zero(), MediaTime(2, 1)};
    const MediaTimeRange second{MediaTime(1, 1), MediaTime(1, 1)};
    const MediaTimeRange third{MediaTime(2, 1), MediaTime(1, 1)};
    EXPECT_EQ(output.audioPlacements, (QList<EditorAudioPlacementRecord>{{2, id(1), 0, first},
                                                                         {3, {}, 0, first},
                                                                         {4, {}, 1, second}, // its voice has ended
                                                                         {2, id(3), 0, third},
                                                                         {3, {}, 0, third}}));
    const CompositionSegment& late = composition.track(2)->segments().at(0);
    EXPECT_EQ(late.source, (MediaTimeRange{MediaTime(1, 2), MediaTime(3, 2)}));
    EXPECT_EQ(late.target, MediaTime(1, 2)) << "in step with the picture";
    EXPECT_EQ(late.trackIndex, 1);
    EXPECT_EQ(composition.track(2)->segments().at(1).source, (MediaTimeRange{MediaTime(1, 1), MediaTime(1, 1)}));

    project.hasLiveClickTrack.reset();
    EXPECT_EQ(build().value().audioPlacements.at(1).segmentID, id(1)) << "no clicks unless the project says so";
}

TEST_F(BuilderTest, WhatPlacesNoPictureBuildsNoVideo) {
    project.tracks = QList<EditorTrack>{{id(90), 0, EditorTrackKind::audio, false}};
    addClip(1, 0, 5);
    addClip(2, 0, 5, 1).sourceURL = QUrl::fromLocalFile("/sound.wav");
    addClip(3, 0, 0, 1);
    const auto output = build().value();
    EXPECT_FALSE(output.videoComposition);
    EXPECT_TRUE(output.videoTrackIDsBySegment.isEmpty());
    EXPECT_EQ(output.audioMix->parameters.size(), 2u);
    EXPECT_EQ(output.composition->duration(), MediaTime(5, 1));
    project.segments.clear();
    EXPECT_EQ(build().value().composition->duration(), MediaTime::zero());
}

TEST_F(BuilderTest, FilesThatFailEndTheBuildInTheirOwnWords) {
    addClip(1, 0, 1);
    addClip(2, 1, 1).sourceURL = QUrl::fromLocalFile("/gone.mov");
    EXPECT_EQ(build().error().message, systemError(2, "/gone.mov").message);
    project.segments.last().sourceURL = QUrl("https://example.org/a.mov");
    EXPECT_FALSE(build());
    EXPECT_EQ(files.openCount.size(), 2u) << "nothing is asked of the network";
}

TEST_F(BuilderTest, RatesAndSizes) {
    addClip(1, 0, 1);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double rate : {0.0, -30.0, std::nan(""), infinity, 2147483648.0}) {
        project.frameRate = rate;
        files.openCount.clear();
        EXPECT_EQ(build().error().message, "The editor canvas or frame rate is invalid.") << rate;
        EXPECT_TRUE(files.openCount.empty());
    }
    const std::pair<double, int> rates[] = {{29.97, 30}, {0.4, 1}, {59.94, 60}, {30.5, 31}, {2147483647.0, 2147483647}};
    for (const auto& [rate, timescale] : rates) {
        project.frameRate = rate;
        EXPECT_EQ(build().value().videoComposition->frameDuration, MediaTime(1, timescale)) << rate;
    }
    project.frameRate = 30;
    project.canvasWidth = 9000;
    project.canvasHeight = 3;
    const auto output = build().value();
    EXPECT_EQ(output.videoComposition->renderWidth, 7680);
    EXPECT_EQ(output.videoComposition->renderHeight, 2);
}

TEST_F(BuilderTest, InstructionsCarryTheLook) {
    project.canvas = freshCanvasStyle();
    project.canvas->cornerRadiusFraction = 0.9;
    project.zoomBlocks = QList<ZoomBlock>{{id(7), 4, 1, 2, {}, 0.2}, {id(8), 0.5, 0, 2, {}, 0}};
    const double opacities[] = {0.25, 7, -1, std::nan("")};
    const float expected[] = {0.25f, 1, 0, 0};
    for (int at = 0; at < 4; ++at)
        addClip(at + 1, at * 2, 2).opacity = opacities[at];
    const VideoComposition video = *build().value().videoComposition;
    ASSERT_EQ(video.instructions.size(), 4u);
    for (std::size_t at = 0; at < 4; ++at) {
        const EditorCompositorInstruction& made = instruction(video, at);
        EXPECT_EQ(made.background, project.canvas->background);
        EXPECT_EQ(made.shadow, CanvasShadow{});
        EXPECT_EQ(made.cornerRadiusFraction, 0.5);
        EXPECT_EQ(made.zoomBlocks.size(), 1);
        EXPECT_EQ(made.layers.first().opacity, expected[at]) << at;
        // A ramp that begins with the third clip touches the end of the second as well.
        EXPECT_EQ(made.containsTweening, at == 1 || at == 2) << at;
    }
    EXPECT_NE(dynamic_cast<FrameCompositor*>(video.makeCompositor().get()), nullptr);

    project.canvas.reset();
    const VideoComposition plain = *build().value().videoComposition;
    EXPECT_EQ(instruction(plain, 0).background, CanvasBackground(RGBAColor{0, 0, 0, 1}));
    EXPECT_EQ(instruction(plain, 0).shadow, CanvasShadow{}) << "a style without a shadow casts the default one";
    EXPECT_EQ(instruction(plain, 0).cornerRadiusFraction, 0);
}

TEST_F(BuilderTest, PicturesWithoutASizeAreHiddenAndKeepTheirPlace) {
    files.add("/flat.mov", {videoTrack(0, 0, 10, {640, 0})});
    addClip(1, 0, 1).sourceURL = QUrl::fromLocalFile("/flat.mov");
    const auto output = build().value();
    EXPECT_EQ(output.composition->duration(), MediaTime(1, 1));
    EXPECT_EQ(instruction(*output.videoComposition, 0).layers.first().opacity, 0);
}

TEST_F(BuilderTest, ARefreshIsWhatABuildWouldGive) {
    addClip(1, 0, 2, 0);
    addClip(2, 1, 2, 1).sourceURL = QUrl::fromLocalFile("/b.mov");
    const auto output = build().value();
    project.canvas = freshCanvasStyle();
    project.canvas->size = CanvasPreset::square1x1;
    project.zoomBlocks = QList<ZoomBlock>{{id(7), 0, 3, 2, {}, 0.2}};
    files.openCount.clear();
    const auto refreshed =
        finish(builder().refreshVideoComposition(project, output.composition, output.videoTrackIDsBySegment), main);
    const VideoComposition rebuilt = *build().value().videoComposition;
    ASSERT_TRUE(refreshed);
    EXPECT_EQ(refreshed->renderWidth, 1080);
    ASSERT_EQ(refreshed->instructions.size(), rebuilt.instructions.size());
    for (std::size_t at = 0; at < rebuilt.instructions.size(); ++at) {
        EXPECT_EQ(instruction(*refreshed, at).layers, instruction(rebuilt, at).layers);
        EXPECT_EQ(instruction(*refreshed, at).timeRange, instruction(rebuilt, at).timeRange);
        EXPECT_EQ(instruction(*refreshed, at).zoomBlocks, instruction(rebuilt, at).zoomBlocks);
    }
    // A clip whose track is not there is left out.
    const auto without =
        finish(builder().refreshVideoComposition(project, output.composition, {{id(1), 1}, {id(2), 9}}), main);
    EXPECT_EQ(layerTracks(*without, 0), std::vector<int>{1});
    EXPECT_EQ(layerTracks(*without, 1), std::vector<int>{});
}

TEST_F(BuilderTest, TheBuilderMayGoWhileItsBuildWaits) {
    addClip(1, 0, 1);
    auto gone = std::make_unique<EditorCompositionBuilder>(builder());
    QCoro::Task<Result<EditorCompositionOutput>> task = gone->build(project);
    gone.reset();
    EXPECT_TRUE(finish(std::move(task), main).has_value());
}

} // namespace
} // namespace keldra
