#pragma once

#include "base/MediaTime.h"
#include "project/EditorSegment.h"

#include <QList>
#include <QSet>

namespace keldra {

/// The timescale of every time of a composition.
constexpr std::int32_t timelineTimescale = 60000;

/// A document's seconds as a composition's time; what is not finite and above zero becomes zero.
MediaTime timelineTime(double seconds);

/// The part of a file's stretch that lies between ticks of the timeline, so that no sum of times is ever rounded.
MediaTimeRange withinTimelineTicks(const MediaTimeRange& range);

/// A stretch of the timeline in which the set of visible clips does not change.
struct EditorInstructionInterval {
    MediaTimeRange timeRange;
    /// Top first: higher rows, then later starts, then ids in text order. Empty in a gap.
    QList<QUuid> activeSegmentIDs;
    friend bool operator==(const EditorInstructionInterval&, const EditorInstructionInterval&) = default;
};

/// Cuts the timeline from zero to `duration` wherever one of the clips with an id in `placed` starts or ends.
QList<EditorInstructionInterval> timelineIntervals(const QList<EditorSegment>& clips, const QSet<QUuid>& placed,
                                                   MediaTime duration);

/// Whether the intervals follow each other from zero to `duration` without a hole.
bool areContinuous(const QList<EditorInstructionInterval>& intervals, MediaTime duration);

} // namespace keldra
