#include "project/Timeline.h"

#include "doubles/Clips.h"
#include "project/FreshProject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace keldra {
namespace {

using test::clip;
using test::id;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

EditorProject projectOf(QList<EditorSegment> clips) {
    EditorProject project;
    project.segments = std::move(clips);
    return project;
}

TEST(Timeline, Rows) {
    EditorProject project = projectOf({});
    EXPECT_EQ(trackCount(project), 2);
    EXPECT_EQ(timelineEnd(project), 0);

    project.segments = {clip(1, 0, 1, 5)};
    project.tracks = QList<EditorTrack>{{id(1), 0, EditorTrackKind::video, true},
                                        {id(2), 1, EditorTrackKind::video, false},
                                        {id(3), 1, EditorTrackKind::audio, true},
                                        {id(4), -1, EditorTrackKind::audio, true}};
    const QList<EditorTrack> rows = normalizedTracks(project);
    ASSERT_EQ(rows.size(), 6);
    EXPECT_EQ(rows[0], project.tracks->at(0));
    EXPECT_EQ(rows[1], project.tracks->at(2));
    for (qsizetype index = 2; index < 6; ++index) {
        EXPECT_EQ(rows[index], (EditorTrack{rows[index].id, index, EditorTrackKind::video, false}));
        EXPECT_NE(rows[index].id, normalizedTracks(project)[index].id);
    }
    EXPECT_EQ(track(project, 1), project.tracks->at(2));
    EXPECT_EQ(track(project, -1).index, 0);
    EXPECT_EQ(track(project, -1).kind, EditorTrackKind::video);
    EXPECT_EQ(track(project, 9).index, 9);

    project.segments.first().trackIndex = std::numeric_limits<qint64>::max();
    EXPECT_EQ(normalizedTracks(project).size(), maximumTrackCount);
}

TEST(Timeline, ActiveClip) {
    const EditorProject project =
        projectOf({clip(2, 1, 1), clip(1, 0, 1), clip(3, 2, 1), clip(4, 2.5, 2, 1), clip(5, 2.5, 2, 1), clip(6, 6, 0)});
    const std::pair<double, int> rows[] = {{-0.1, 0}, {0, 1},   {1, 2}, {2, 2}, {2.4, 3},
                                           {2.5, 4},  {3.5, 4}, {5, 0}, {6, 6}, {notANumber, 0}};
    for (const auto& [time, expected] : rows) {
        const auto active = activeSegment(project, time);
        EXPECT_EQ(active ? active->segment.id : id(0), id(expected)) << "at " << time;
        EXPECT_TRUE(!active || active->timelineStart == active->segment.timelineStart);
    }
    EXPECT_EQ(timelineEnd(project), 6);
}

TEST(Timeline, OrderIsTotalAndLeavesOutWhatDoesNotLast) {
    EditorProject project = projectOf({clip(9, 1, 1), clip(3, 0, 1, 2), clip(4, 0, 1, 1), clip(2, 0, 1, 1),
                                       clip(5, 0, 0), clip(6, 0, -1), clip(7, -2, 1), clip(8, 0, notANumber)});
    // Ids are ordered as text: QUuid's own order would put other variants first.
    project.segments.append(clip(0, 1, 1));
    project.segments.last().id = QUuid("FFFFFFFF-0000-0000-0000-000000000000");
    QList<QUuid> order;
    for (const EditorSegment& segment : visibleSegments(project))
        order.append(segment.id);
    EXPECT_THAT(order, testing::ElementsAre(id(7), id(2), id(4), id(3), id(9), project.segments.last().id));

    EXPECT_TRUE(sortedZoomBlocks(project).isEmpty());
    project.zoomBlocks = QList<ZoomBlock>{
        {id(3), 2, 1, 2, {}, 0}, {id(2), 2, 1, 2, {}, 0}, {id(1), 1, 0, 2, {}, 0}, {id(4), 0, 1, 2, {}, 0}};
    QList<QUuid> blocks;
    for (const ZoomBlock& block : sortedZoomBlocks(project))
        blocks.append(block.id);
    EXPECT_THAT(blocks, testing::ElementsAre(id(4), id(2), id(3)));
}

TEST(Fades, FitTheClip) {
    struct Row {
        double duration;
        std::optional<double> fadeIn;
        std::optional<double> fadeOut;
        FadeLengths expected;
    };
    const Row rows[] = {
        {4, {}, {}, {0, 0}},
        {4, 1, 3, {1, 3}},
        {4, 6, 2, {3, 1}},
        {4, 6, {}, {4, 0}},
        {4, -1, 5, {0, 4}},
        {4, notANumber, infinity, {0, 0}},
        {0, 1, 1, {0, 0}},
        {-2, 1, 1, {0, 0}},
        {notANumber, 1, 1, {0, 0}},
        {infinity, 1, 1, {0, 0}},
        {4, 1.7e308, 1.7e308, {2, 2}},
    };
    for (const Row& row : rows) {
        EditorSegment segment = clip(1, 0, row.duration);
        segment.fadeInDuration = row.fadeIn;
        segment.fadeOutDuration = row.fadeOut;
        const FadeLengths fades = normalizedFades(segment);
        EXPECT_EQ(fades, row.expected) << row.duration << " in " << row.fadeIn.value_or(-9) << " gave " << fades.fadeIn
                                       << ", " << fades.fadeOut;
    }
}

TEST(FreshProject, DescribesTheSource) {
    const QDateTime now = QDateTime({2024, 1, 2}, {3, 4, 5}, Qt::UTC);
    const QUrl url("file:///a.mov");
    SourceFacts facts{7.5, SourceFacts::Video{59.94, {1080, 1920}, QTransform(0, 1, -1, 0, 1920, 0)}};
    const EditorProject project = makeFreshProject(url, true, facts, now);
    EXPECT_EQ(project.sourceURL, url);
    EXPECT_EQ(project.createdAt, now);
    EXPECT_EQ(project.updatedAt, now);
    EXPECT_EQ(project.frameRate, 59.94);
    EXPECT_EQ(project.sourceDuration, 7.5);
    EXPECT_EQ(project.canvasWidth, 1920);
    EXPECT_EQ(project.canvasHeight, 1080);
    EditorSegment whole;
    whole.id = project.segments.first().id;
    whole.duration = 7.5;
    EXPECT_EQ(project.segments, QList<EditorSegment>{whole});
    ASSERT_EQ(project.tracks->size(), 2);
    EXPECT_EQ(normalizedTracks(project), *project.tracks);
    EXPECT_TRUE(project.zoomBlocks && project.zoomBlocks->isEmpty());
    EXPECT_EQ(project.hasLiveClickTrack, true);
    EXPECT_FALSE(project.clickSoundVolume);

    EXPECT_EQ(project.canvas, freshCanvasStyle());
    EXPECT_EQ(gradientPresets().size(), 20);

    const EditorProject soundOnly = makeFreshProject(url, false, {-3, {}}, now);
    EXPECT_EQ(soundOnly.frameRate, 30);
    EXPECT_EQ(soundOnly.sourceDuration, 0);
    EXPECT_EQ(soundOnly.canvasWidth, 0);
    facts.video->nominalFrameRate = 0;
    EXPECT_EQ(makeFreshProject(url, false, facts, now).frameRate, 30);
}

} // namespace
} // namespace keldra
