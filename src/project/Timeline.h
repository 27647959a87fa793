#pragma once

#include "project/EditorProject.h"

#include <optional>

namespace keldra {

/// A project with clips on absurdly high rows shows no more rows than this.
constexpr qint64 maximumTrackCount = 4096;

/// Where the last clip ends, in seconds; 0 when there is none. Clips without length count.
double timelineEnd(const EditorProject& project);

/// How many rows the project needs for its clips and its stored rows; at least 2.
qint64 trackCount(const EditorProject& project);

/// All rows from 0 upward. A row that is not stored is made up, with a fresh id at each call; of two stored rows with
/// one index the later counts.
QList<EditorTrack> normalizedTracks(const EditorProject& project);

/// The row of that index, made up when it is not stored.
EditorTrack track(const EditorProject& project, qint64 index);

struct ActiveSegment {
    EditorSegment segment;
    double timelineStart = 0;
    friend bool operator==(const ActiveSegment&, const ActiveSegment&) = default;
};

/// The clip on top at `time` (seconds). A clip holds both its ends; the higher row wins, then the earlier in the list.
std::optional<ActiveSegment> activeSegment(const EditorProject& project, double time);

/// Clips that last, ordered by start, row and id.
QList<EditorSegment> visibleSegments(const EditorProject& project);

/// Zoom blocks that last, ordered by start and id.
QList<ZoomBlock> sortedZoomBlocks(const EditorProject& project);

} // namespace keldra
