#include "project/Timeline.h"

#include "project/UuidOrder.h"

#include <QHash>

#include <algorithm>

namespace keldra {
namespace {

const EditorTrack* storedTrack(const EditorProject& project, qint64 index) {
    if (!project.tracks)
        return nullptr;
    const auto found = std::find_if(project.tracks->rbegin(), project.tracks->rend(),
                                    [index](const EditorTrack& row) { return row.index == index; });
    return found == project.tracks->rend() ? nullptr : &*found;
}

EditorTrack madeUpTrack(qint64 index) {
    return {QUuid::createUuid(), index, EditorTrackKind::video, false};
}

} // namespace

double timelineEnd(const EditorProject& project) {
    if (project.segments.isEmpty())
        return 0;
    double end = project.segments.first().timelineEnd();
    for (const EditorSegment& segment : project.segments)
        end = std::max(end, segment.timelineEnd());
    return end;
}

qint64 trackCount(const EditorProject& project) {
    qint64 highest = 1;
    for (const EditorSegment& segment : project.segments)
        highest = std::max(highest, segment.trackIndex);
    if (project.tracks)
        for (const EditorTrack& row : *project.tracks)
            highest = std::max(highest, row.index);
    return std::min(highest, maximumTrackCount - 1) + 1;
}

QList<EditorTrack> normalizedTracks(const EditorProject& project) {
    QHash<qint64, const EditorTrack*> stored;
    if (project.tracks)
        for (const EditorTrack& row : *project.tracks)
            stored.insert(row.index, &row);
    QList<EditorTrack> rows;
    const qint64 count = trackCount(project);
    rows.reserve(count);
    for (qint64 index = 0; index < count; ++index) {
        const EditorTrack* row = stored.value(index);
        rows.append(row ? *row : madeUpTrack(index));
    }
    return rows;
}

EditorTrack track(const EditorProject& project, qint64 index) {
    const EditorTrack* row = index < 0 ? nullptr : storedTrack(project, index);
    return row ? *row : madeUpTrack(std::max<qint64>(index, 0));
}

std::optional<ActiveSegment> activeSegment(const EditorProject& project, double time) {
    const EditorSegment* top = nullptr;
    for (const EditorSegment& segment : project.segments)
        if (segment.timelineStart <= time && segment.timelineEnd() >= time &&
            (!top || segment.trackIndex > top->trackIndex))
            top = &segment;
    if (!top)
        return std::nullopt;
    return ActiveSegment{*top, top->timelineStart};
}

QList<EditorSegment> visibleSegments(const EditorProject& project) {
    QList<EditorSegment> visible;
    visible.reserve(project.segments.size());
    std::copy_if(project.segments.begin(), project.segments.end(), std::back_inserter(visible),
                 [](const EditorSegment& segment) { return segment.duration > 0; });
    std::stable_sort(visible.begin(), visible.end(), [](const EditorSegment& a, const EditorSegment& b) {
        if (a.timelineStart != b.timelineStart)
            return a.timelineStart < b.timelineStart;
        if (a.trackIndex != b.trackIndex)
            return a.trackIndex < b.trackIndex;
        return textOrderLess(a.id, b.id);
    });
    return visible;
}

QList<ZoomBlock> sortedZoomBlocks(const EditorProject& project) {
    QList<ZoomBlock> sorted;
    if (!project.zoomBlocks)
        return sorted;
    std::copy_if(project.zoomBlocks->begin(), project.zoomBlocks->end(), std::back_inserter(sorted),
                 [](const ZoomBlock& block) { return block.duration > 0; });
    std::stable_sort(sorted.begin(), sorted.end(), [](const ZoomBlock& a, const ZoomBlock& b) {
        if (a.timelineStart != b.timelineStart)
            return a.timelineStart < b.timelineStart;
        return textOrderLess(a.id, b.id);
    });
    return sorted;
}

} // namespace keldra
