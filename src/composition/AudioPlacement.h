#pragma once

#include "media/AssetTrack.h"
#include "media/AudioMix.h"
#include "media/Composition.h"
#include "project/EditorProject.h"

#include <QList>
#include <QUuid>

#include <optional>

namespace keldra {

/// A sound placed on a composition's track: what stays when gains and fades change.
struct EditorAudioPlacementRecord {
    std::int32_t trackID = 0;
    /// The clip; not set for live click sounds.
    std::optional<QUuid> segmentID;
    /// The row whose mute counts.
    qint64 editorTrackIndex = 0;
    /// The clip's range on the timeline.
    MediaTimeRange timeRange;
    friend bool operator==(const EditorAudioPlacementRecord&, const EditorAudioPlacementRecord&) = default;
};

/// A placed sound with the gains that its project gives it now.
struct AudioPlacement {
    std::optional<QUuid> segmentID;
    qint64 editorTrackIndex = 0;
    MediaTimeRange timeRange;
    /// Seconds.
    double fadeInDuration = 0;
    double fadeOutDuration = 0;
    /// 0 to 2.
    double volume = 1;
    friend bool operator==(const AudioPlacement&, const AudioPlacement&) = default;
};

/// Whether a file's sound has the form in which our recorder writes live click sounds: one channel of floating-point
/// samples, uncompressed, 48,000 a second. Nothing else tells them from other sounds.
bool isLiveClickTrack(const AssetTrack& track);

/// The gain of a clip, from 0 to 2; a clip that states none, or nonsense, sounds as it is.
double clipGain(const EditorSegment& clip);
/// The gain of the project's live click sounds, by the same rule.
double clickGain(const EditorProject& project);

/// The gains for sounds that were placed, from the project as it stands. Costs one pass and no media work. Sounds whose
/// clip or track is gone have none. With nothing placed `currentMix` stays.
std::optional<AudioMix> audioMix(const EditorProject& project, const Composition& composition,
                                 const std::optional<AudioMix>& currentMix,
                                 const QList<EditorAudioPlacementRecord>& placements);

} // namespace keldra
