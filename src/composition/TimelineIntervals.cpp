#include "composition/TimelineIntervals.h"

#include "project/Clean.h"
#include "project/UuidOrder.h"

#include <algorithm>
#include <vector>

namespace keldra {
namespace {

MediaTime usableDuration(MediaTime duration) {
    return duration.isNumeric() && duration > MediaTime::zero() ? duration : MediaTime::zero();
}

struct PlacedClip {
    const EditorSegment* segment;
    MediaTime start;
    MediaTime end;
};

std::vector<PlacedClip> placedClips(const QList<EditorSegment>& clips, const QSet<QUuid>& placed) {
    std::vector<PlacedClip> considered;
    for (const EditorSegment& clip : clips)
        if (clip.duration > 0 && placed.contains(clip.id))
            considered.push_back({&clip, timelineTime(clip.timelineStart), timelineTime(clip.timelineEnd())});
    std::stable_sort(considered.begin(), considered.end(),
                     [](const PlacedClip& a, const PlacedClip& b) { return a.start < b.start; });
    return considered;
}

std::vector<MediaTime> boundaries(const std::vector<PlacedClip>& clips, MediaTime duration) {
    std::vector<MediaTime> times{MediaTime::zero(), duration};
    for (const PlacedClip& clip : clips) {
        times.push_back(std::min(clip.start, duration));
        times.push_back(std::min(clip.end, duration));
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

bool isAbove(const PlacedClip& a, const PlacedClip& b) {
    if (a.segment->trackIndex != b.segment->trackIndex)
        return a.segment->trackIndex > b.segment->trackIndex;
    if (a.segment->timelineStart != b.segment->timelineStart)
        return a.segment->timelineStart > b.segment->timelineStart;
    return textOrderLess(a.segment->id, b.segment->id);
}

} // namespace

MediaTime timelineTime(double seconds) {
    return isPositiveFinite(seconds) ? MediaTime::fromSeconds(seconds, timelineTimescale)
                                     : MediaTime(0, timelineTimescale);
}

MediaTimeRange withinTimelineTicks(const MediaTimeRange& range) {
    constexpr MediaTime tick(1, timelineTimescale);
    const MediaTime end = range.end();
    MediaTime first = range.start.converted(timelineTimescale);
    MediaTime last = end.converted(timelineTimescale);
    if (first < range.start)
        first = first + tick;
    if (last > end)
        last = last - tick;
    return {first, last > first ? last - first : MediaTime::zero()};
}

QList<EditorInstructionInterval> timelineIntervals(const QList<EditorSegment>& clips, const QSet<QUuid>& placed,
                                                   MediaTime duration) {
    const std::vector<PlacedClip> considered = placedClips(clips, placed);
    const std::vector<MediaTime> times = boundaries(considered, usableDuration(duration));
    QList<EditorInstructionInterval> intervals;
    // One sweep: clips come in as they start and go out as they end.
    std::vector<PlacedClip> active;
    auto next = considered.begin();
    for (std::size_t at = 0; at + 1 < times.size(); ++at) {
        const MediaTime start = times[at];
        const MediaTime end = times[at + 1];
        for (; next != considered.end() && next->start < end; ++next)
            active.insert(std::upper_bound(active.begin(), active.end(), *next, isAbove), *next);
        std::erase_if(active, [start](const PlacedClip& clip) { return clip.end <= start; });
        EditorInstructionInterval interval{{start, end - start}, {}};
        for (const PlacedClip& clip : active)
            interval.activeSegmentIDs.append(clip.segment->id);
        intervals.append(interval);
    }
    return intervals;
}

bool areContinuous(const QList<EditorInstructionInterval>& intervals, MediaTime duration) {
    const MediaTime end = usableDuration(duration);
    if (intervals.isEmpty())
        return end == MediaTime::zero();
    MediaTime expectedStart = MediaTime::zero();
    for (const EditorInstructionInterval& interval : intervals) {
        if (interval.timeRange.start != expectedStart || interval.timeRange.isEmpty())
            return false;
        expectedStart = interval.timeRange.end();
    }
    return expectedStart == end && end > MediaTime::zero();
}

} // namespace keldra
