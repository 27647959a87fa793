#include "editing/EditorCommands.h"

#include "doubles/RandomProject.h"
#include "editing/EditorCommandManager.h"
#include "project/Timeline.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

const QDateTime later = QDateTime::fromSecsSinceEpoch(3'000'000'000, Qt::UTC);

EditorProject projectWith(QList<EditorSegment> segments, double frameRate = 30) {
    EditorProject project;
    project.frameRate = frameRate;
    project.segments = std::move(segments);
    return project;
}

EditorSegment clip(double timelineStart, double duration, double sourceStart = 0, qint64 trackIndex = 0) {
    EditorSegment segment;
    segment.id = QUuid::createUuid();
    segment.timelineStart = timelineStart;
    segment.duration = duration;
    segment.sourceStart = sourceStart;
    segment.trackIndex = trackIndex;
    return segment;
}

TEST(SplitSegment, CutsInPlaceAndResetsLevelAndInnerFades) {
    EditorSegment whole = clip(10, 4, 100, 2);
    whole.fadeInDuration = 0.5;
    whole.fadeOutDuration = 0.25;
    whole.volume = 1.5;
    whole.isMuted = true;
    whole.opacity = 0.75;
    whole.displayName = "Name";
    EditorProject project = projectWith({clip(0, 1), whole, clip(20, 1)});
    const EditorProject before = project;

    const auto command = splitSegmentCommand(project, 11);
    ASSERT_TRUE(command);
    EXPECT_EQ(command->description(), "Split clip");
    command->apply(project, later);

    ASSERT_EQ(project.segments.size(), 4);
    EditorSegment left = whole;
    left.duration = 1;
    left.fadeOutDuration.reset();
    left.volume.reset();
    left.isMuted.reset();
    EXPECT_EQ(project.segments[1], left);
    EditorSegment right = whole;
    right.id = project.segments[2].id;
    right.sourceStart = 101;
    right.timelineStart = 11;
    right.duration = 3;
    right.fadeInDuration.reset();
    right.volume.reset();
    right.isMuted.reset();
    EXPECT_EQ(project.segments[2], right);
    EXPECT_NE(right.id, whole.id);
    EXPECT_EQ(project.updatedAt, later);

    command->revert(project, before.updatedAt);
    EXPECT_EQ(project, before) << "undo brings volume and mute back";
}

TEST(SplitSegment, LeavesNoPieceUnderOneFrame) {
    const struct {
        double frameRate, time;
        bool isSplit;
    } rows[] = {
        {4, 0.25, true}, {4, 0.125, false}, {4, 1.75, true}, {4, 1.9, false},
        {0.5, 1, true},  {0.5, 0.9, false}, {1, 1, true},    {4, 5, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(splitSegmentCommand(projectWith({clip(0, 2)}, row.frameRate), row.time).has_value(), row.isSplit)
            << row.frameRate << " fps at " << row.time;
}

TEST(EditorCommands, MakeNothingOfNoChange) {
    const EditorProject project = projectWith({clip(0, 2)});
    const QUuid id = project.segments[0].id;
    EditorProject faded = project;
    faded.segments[0].fadeInDuration = 1;
    EditorProject louder = project;
    louder.segments[0].volume = 2;
    const QList<ZoomBlock> none;
    CanvasStyle style;

    EXPECT_FALSE(deleteSegmentsCommand(project, {}));
    EXPECT_FALSE(deleteSegmentsCommand(project, {QUuid::createUuid()}));
    EXPECT_FALSE(moveSegmentCommand(project, project));
    EXPECT_FALSE(trimSegmentCommand(project, project));
    EXPECT_FALSE(setSegmentsCommand(project, project, "Adjust audio"));
    EXPECT_TRUE(setSegmentsCommand(project, louder, "Adjust audio"));
    EXPECT_FALSE(adjustSegmentFadesCommand(project, louder, id)) << "the fades are the same";
    EXPECT_FALSE(adjustSegmentFadesCommand(project, faded, QUuid::createUuid()));
    EXPECT_TRUE(adjustSegmentFadesCommand(project, faded, id));
    EXPECT_FALSE(setZoomBlocksCommand(none, none, "Add zoom"));
    EXPECT_TRUE(setZoomBlocksCommand(std::nullopt, none, "Add zoom")) << "a missing list differs from an empty one";
    EXPECT_FALSE(toggleTrackMuteCommand(project, 2));
    EXPECT_FALSE(setCanvasStyleCommand(std::nullopt, std::nullopt));
    EXPECT_FALSE(setCanvasStyleCommand(style, style));
    EXPECT_TRUE(setCanvasStyleCommand(std::nullopt, style));
    EXPECT_FALSE(setClickSoundVolumeCommand(0.5, 0.5));
    EXPECT_TRUE(setClickSoundVolumeCommand(std::nullopt, 0.5));
}

TEST(EditorCommands, WriteOnlyTheirOwnFields) {
    EditorProject project = projectWith({clip(0, 2)});
    EditorProject moved = project;
    moved.segments[0].timelineStart = 5;
    const auto move = moveSegmentCommand(project, moved);
    move->apply(project, later);
    project.zoomBlocks = QList<ZoomBlock>{{QUuid::createUuid(), 1, 2, 2, {}, 0.6}};
    move->revert(project, later);
    EXPECT_EQ(project.segments[0].timelineStart, 0);
    EXPECT_EQ(project.zoomBlocks->size(), 1) << "undoing a move leaves the zoom alone";
}

TEST(ToggleTrackMute, StoresAllRowsAndRestoresTheMissingList) {
    EditorProject project = projectWith({clip(0, 2)});
    EditorCommandManager history;
    history.execute(*toggleTrackMuteCommand(project, 1), project, later);
    ASSERT_EQ(project.tracks->size(), 2);
    EXPECT_TRUE(project.tracks->at(1).isMuted);
    EXPECT_FALSE(project.tracks->at(0).isMuted);
    history.execute(*toggleTrackMuteCommand(project, 1), project, later);
    EXPECT_FALSE(project.tracks->at(1).isMuted);
    history.undo(project, later);
    history.undo(project, later);
    EXPECT_FALSE(project.tracks);
}

/// One random edit, or nothing when it would change nothing.
std::optional<EditorCommand> randomEdit(const EditorProject& project, RandomProject& random) {
    EditorProject after = project;
    switch (random.below(8)) {
    case 0:
        return splitSegmentCommand(project, random.real(0, 200));
    case 1:
        return project.segments.isEmpty()
                   ? std::nullopt
                   : deleteSegmentsCommand(project, {project.segments[random.below(int(project.segments.size()))].id});
    case 2:
        after.segments.append(random.segment());
        return moveSegmentCommand(project, after);
    case 3:
        return toggleTrackMuteCommand(project, random.whole(0, 6));
    case 4:
        return setCanvasStyleCommand(project.canvas, random.style());
    case 5:
        return setZoomBlocksCommand(project.zoomBlocks, random.zoomBlocks(), "Adjust zoom");
    case 6:
        return setClickSoundVolumeCommand(project.clickSoundVolume, random.real(0, 2));
    default:
        if (after.segments.isEmpty())
            return std::nullopt;
        after.segments[0].volume = random.real(0, 2);
        return setSegmentsCommand(project, after, "Adjust audio");
    }
}

double coverage(const EditorProject& project) {
    double sum = 0;
    for (const EditorSegment& segment : project.segments)
        sum += segment.duration;
    return sum;
}

TEST(EditorHistory, UndoAndRedoWalkThroughTheSameValues) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomProject random(seed);
    for (int round = 0; round < 20; ++round) {
        EditorProject project = random.make(random.below(31));
        EditorCommandManager history;
        // updatedAt counts the steps, so that whole values can be compared.
        QList<EditorProject> states = {project};
        for (int step = 0; step < 60; ++step) {
            const auto command = randomEdit(project, random);
            if (!command)
                continue;
            const double before = coverage(project);
            history.execute(*command, project, later);
            if (command->description() == u"Split clip") {
                ASSERT_NEAR(coverage(project), before, 1e-9) << "a split keeps coverage";
            }
            for (const EditorSegment& segment : project.segments) {
                const FadeLengths fades = normalizedFades(segment);
                ASSERT_LE(fades.fadeIn + fades.fadeOut, segment.duration * (1 + 1e-12));
            }
            states.append(project);
        }
        const auto sameButForDate = [](EditorProject a, const EditorProject& b) {
            a.updatedAt = b.updatedAt;
            return a == b;
        };
        for (qsizetype i = states.size() - 2; i >= 0; --i) {
            history.undo(project, later);
            ASSERT_TRUE(sameButForDate(project, states[i])) << "undo to " << i;
        }
        ASSERT_FALSE(history.canUndo());
        for (qsizetype i = 1; i < states.size(); ++i) {
            history.redo(project, later);
            ASSERT_TRUE(sameButForDate(project, states[i])) << "redo to " << i;
        }
        ASSERT_FALSE(history.canRedo());
    }
}

TEST(EditorHistory, ForgetsTheOldestBeyondItsLimitAndTheUndoneAfterANewStep) {
    EditorProject project = projectWith({});
    EditorCommandManager history;
    QList<bool> canRedo;
    QObject::connect(&history, &EditorCommandManager::canRedoChanged, [&](bool value) { canRedo.append(value); });
    for (int i = 1; i <= 101; ++i)
        history.execute(*setClickSoundVolumeCommand(project.clickSoundVolume, i), project, later);
    EXPECT_EQ(canRedo.count(false), 101) << "sent at every set";
    int undone = 0;
    for (; history.canUndo(); ++undone)
        history.undo(project, later);
    EXPECT_EQ(undone, 100);
    EXPECT_EQ(project.clickSoundVolume, 1);
    EXPECT_TRUE(history.canRedo());
    history.execute(*setClickSoundVolumeCommand(project.clickSoundVolume, 7), project, later);
    EXPECT_FALSE(history.canRedo());
    const EditorProject kept = project;
    history.redo(project, later);
    EXPECT_EQ(project, kept);
}

TEST(EditorHistory, SharesWhatDidNotChange) {
    RandomProject random(1);
    EditorProject project = random.make(20'000);
    EditorProject after = project;
    after.tracks = QList<EditorTrack>{};
    const auto move = moveSegmentCommand(project, after);
    ASSERT_TRUE(move);
    const EditorSegment* const clips = project.segments.constData();
    move->apply(project, later);
    EXPECT_EQ(project.segments.constData(), clips) << "a list that did not change is not copied";
}

} // namespace
} // namespace keldra
