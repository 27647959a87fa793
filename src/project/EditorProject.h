#pragma once

#include "project/CanvasStyle.h"
#include "project/EditorSegment.h"
#include "project/EditorTrack.h"
#include "project/ZoomBlock.h"

#include <QDateTime>
#include <QList>

namespace keldra {

/// The editor's document: everything that an edit can change, as plain values. A copy is a full copy. Times are seconds
/// on one timeline that starts at 0.
///
/// Clips may overlap and stand in any order; rows may be missing. The functions of Timeline.h give such lists a
/// meaning, and nothing repairs them.
struct EditorProject {
    QUuid id;
    /// The file that the project was made from.
    QUrl sourceURL;
    QDateTime createdAt;
    /// Set to now by every edit.
    QDateTime updatedAt;
    /// Nominal frames per second.
    double frameRate = 0;
    double sourceDuration = 0;
    /// Size of the upright source in pixels.
    double canvasWidth = 0;
    double canvasHeight = 0;
    QList<EditorSegment> segments;
    std::optional<QList<EditorTrack>> tracks;
    /// Not set means a default-made CanvasStyle.
    std::optional<CanvasStyle> canvas;
    std::optional<QList<ZoomBlock>> zoomBlocks;
    /// True when the source carries a track of click sounds.
    std::optional<bool> hasLiveClickTrack;
    std::optional<double> clickSoundVolume;

    CanvasStyle style() const { return canvas.value_or(CanvasStyle{}); }
    friend bool operator==(const EditorProject&, const EditorProject&) = default;
};

} // namespace keldra
