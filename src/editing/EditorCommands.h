#pragma once

#include "editing/EditorCommand.h"

#include <QSet>
#include <QUuid>

#include <optional>

// The changes that an editor makes. Each gives nothing when it would change nothing, so that no empty step is kept.
// Times are timeline seconds.

namespace keldra {

/// Cuts the clip on top at `time` in two:
///
///     before  [=========clip=========]        the left piece keeps the id, the fade-in and its place in the list
///     after   [===left===][===right==]        the right piece, next in the list, gets a new id and the fade-out
///
/// Both pieces lose volume and mute and start at the default level. Nothing when there is no clip, or when a piece
/// would be shorter than one frame.
std::optional<EditorCommand> splitSegmentCommand(const EditorProject& project, double time);

/// Takes the clips with these ids out. Nothing when there are none.
std::optional<EditorCommand> deleteSegmentsCommand(const EditorProject& project, const QSet<QUuid>& ids);

/// From the clips and rows of one project to those of another.
std::optional<EditorCommand> moveSegmentCommand(const EditorProject& before, const EditorProject& after);

/// From the clips of one project to those of another.
std::optional<EditorCommand> trimSegmentCommand(const EditorProject& before, const EditorProject& after);

/// The same, when the fades of the clip `id` differ. Nothing when the clip is missing from either.
std::optional<EditorCommand> adjustSegmentFadesCommand(const EditorProject& before, const EditorProject& after,
                                                       const QUuid& id);

/// From the clips of one project to those of another, under the caller's name, e.g. "Adjust audio".
std::optional<EditorCommand> setSegmentsCommand(const EditorProject& before, const EditorProject& after,
                                                const QString& description);

/// "Add zoom", "Adjust zoom" and "Delete zoom". A list that is not set differs from an empty one.
std::optional<EditorCommand> setZoomBlocksCommand(const std::optional<QList<ZoomBlock>>& before,
                                                  const QList<ZoomBlock>& after, const QString& description);

/// Turns the mute of a row round, and stores all rows with it. Nothing when there is no such row.
std::optional<EditorCommand> toggleTrackMuteCommand(const EditorProject& project, qint64 index);

std::optional<EditorCommand> setCanvasStyleCommand(const std::optional<CanvasStyle>& before,
                                                   const std::optional<CanvasStyle>& after);

std::optional<EditorCommand> setClickSoundVolumeCommand(const std::optional<double>& before, double after);

} // namespace keldra
