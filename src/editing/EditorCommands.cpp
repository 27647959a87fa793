#include "editing/EditorCommands.h"

#include "project/Timeline.h"

#include <algorithm>

namespace keldra {
namespace {

ProjectValues segmentsOf(QList<EditorSegment> segments) {
    ProjectValues values;
    values.segments = std::move(segments);
    return values;
}

ProjectValues tracksOf(std::optional<QList<EditorTrack>> tracks) {
    ProjectValues values;
    values.tracks = std::move(tracks);
    return values;
}

std::optional<EditorCommand> commandUnlessEqual(const QString& description, ProjectValues before, ProjectValues after) {
    if (before == after)
        return std::nullopt;
    return EditorCommand(description, std::move(before), std::move(after));
}

qsizetype positionOf(const EditorProject& project, const QUuid& id) {
    const auto found = std::find_if(project.segments.begin(), project.segments.end(),
                                    [&](const EditorSegment& segment) { return segment.id == id; });
    return found == project.segments.end() ? -1 : std::distance(project.segments.begin(), found);
}

/// The piece of a clip from `offset` on, `duration` long, at the default level and without fades.
EditorSegment pieceOf(const EditorSegment& clip, double offset, double duration) {
    EditorSegment piece = clip;
    piece.sourceStart += offset;
    piece.timelineStart += offset;
    piece.duration = duration;
    piece.fadeInDuration.reset();
    piece.fadeOutDuration.reset();
    piece.volume.reset();
    piece.isMuted.reset();
    return piece;
}

} // namespace

std::optional<EditorCommand> splitSegmentCommand(const EditorProject& project, double time) {
    const auto active = activeSegment(project, time);
    if (!active)
        return std::nullopt;
    const EditorSegment& clip = active->segment;
    const double offset = time - active->timelineStart;
    const double shortest = project.frameRate > 1 ? 1 / project.frameRate : 1;
    if (offset < shortest || clip.duration - offset < shortest)
        return std::nullopt;

    EditorSegment left = pieceOf(clip, 0, offset);
    left.fadeInDuration = clip.fadeInDuration;
    EditorSegment right = pieceOf(clip, offset, clip.duration - offset);
    right.id = QUuid::createUuid();
    right.fadeOutDuration = clip.fadeOutDuration;

    QList<EditorSegment> after = project.segments;
    const qsizetype position = positionOf(project, clip.id);
    after[position] = left;
    after.insert(position + 1, right);
    return EditorCommand(QStringLiteral("Split clip"), segmentsOf(project.segments), segmentsOf(std::move(after)));
}

std::optional<EditorCommand> deleteSegmentsCommand(const EditorProject& project, const QSet<QUuid>& ids) {
    QList<EditorSegment> after = project.segments;
    const auto taken = after.removeIf([&](const EditorSegment& segment) { return ids.contains(segment.id); });
    if (taken == 0)
        return std::nullopt;
    return EditorCommand(QStringLiteral("Delete clips"), segmentsOf(project.segments), segmentsOf(std::move(after)));
}

std::optional<EditorCommand> moveSegmentCommand(const EditorProject& before, const EditorProject& after) {
    const auto values = [](const EditorProject& project) {
        ProjectValues both = segmentsOf(project.segments);
        both.tracks = project.tracks;
        return both;
    };
    return commandUnlessEqual(QStringLiteral("Move clip"), values(before), values(after));
}

std::optional<EditorCommand> trimSegmentCommand(const EditorProject& before, const EditorProject& after) {
    return setSegmentsCommand(before, after, QStringLiteral("Trim clip"));
}

std::optional<EditorCommand> adjustSegmentFadesCommand(const EditorProject& before, const EditorProject& after,
                                                       const QUuid& id) {
    const qsizetype old = positionOf(before, id);
    const qsizetype now = positionOf(after, id);
    if (old < 0 || now < 0)
        return std::nullopt;
    const EditorSegment& oldClip = before.segments[old];
    const EditorSegment& newClip = after.segments[now];
    if (oldClip.fadeInDuration == newClip.fadeInDuration && oldClip.fadeOutDuration == newClip.fadeOutDuration)
        return std::nullopt;
    return EditorCommand(QStringLiteral("Adjust audio fades"), segmentsOf(before.segments), segmentsOf(after.segments));
}

std::optional<EditorCommand> setSegmentsCommand(const EditorProject& before, const EditorProject& after,
                                                const QString& description) {
    return commandUnlessEqual(description, segmentsOf(before.segments), segmentsOf(after.segments));
}

std::optional<EditorCommand> setZoomBlocksCommand(const std::optional<QList<ZoomBlock>>& before,
                                                  const QList<ZoomBlock>& after, const QString& description) {
    ProjectValues old;
    old.zoomBlocks = before;
    ProjectValues now;
    now.zoomBlocks = std::optional(after);
    return commandUnlessEqual(description, std::move(old), std::move(now));
}

std::optional<EditorCommand> toggleTrackMuteCommand(const EditorProject& project, qint64 index) {
    QList<EditorTrack> rows = normalizedTracks(project);
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const EditorTrack& each) { return each.index == index; });
    if (row == rows.end())
        return std::nullopt;
    row->isMuted = !row->isMuted;
    return EditorCommand(QStringLiteral("Mute track"), tracksOf(project.tracks), tracksOf(std::move(rows)));
}

std::optional<EditorCommand> setCanvasStyleCommand(const std::optional<CanvasStyle>& before,
                                                   const std::optional<CanvasStyle>& after) {
    ProjectValues old;
    old.canvas = before;
    ProjectValues now;
    now.canvas = after;
    return commandUnlessEqual(QStringLiteral("Edit canvas"), std::move(old), std::move(now));
}

std::optional<EditorCommand> setClickSoundVolumeCommand(const std::optional<double>& before, double after) {
    ProjectValues old;
    old.clickSoundVolume = before;
    ProjectValues now;
    now.clickSoundVolume = std::optional(after);
    return commandUnlessEqual(QStringLiteral("Adjust click sound volume"), std::move(old), std::move(now));
}

} // namespace keldra
