#include "composition/AudioPlacement.h"

#include "composition/FadeCurve.h"
#include "composition/TimelineIntervals.h"
#include "project/Timeline.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

namespace keldra {
namespace {

/// Ramps are straight; this many of them make a fade look smooth.
constexpr int fadeSteps = 24;

double gainOf(const std::optional<double>& volume) {
    const bool isUsable = volume && std::isfinite(*volume) && *volume >= 0;
    return isUsable ? std::min(*volume, 2.0) : 1.0;
}

void writeSmoothRamp(AudioMixParameters& parameters, bool isFadeIn, float gain, MediaTime from, MediaTime to) {
    const auto steps = fadeCurveSegments(isFadeIn, fadeSteps, from.seconds(), (to - from).seconds());
    MediaTime begin = from;
    for (int i = 0; i < steps.size(); ++i) {
        // The ends are the fade's own, so that rounding opens no hole.
        const MediaTime end = i + 1 < steps.size() ? timelineTime(steps[i + 1].start) : to;
        parameters.setVolumeRamp(gain * float(steps[i].startGain), gain * float(steps[i].endGain),
                                 {begin, end - begin});
        begin = end;
    }
}

void writeGains(AudioMixParameters& parameters, const AudioPlacement& placement, bool isRowMuted) {
    const MediaTime start = placement.timeRange.start;
    const MediaTime end = placement.timeRange.end();
    const auto gain = float(placement.volume);
    if (isRowMuted || !(gain > 0)) {
        parameters.setVolume(0, start);
        return;
    }
    if (placement.fadeInDuration <= 0 && placement.fadeOutDuration <= 0) {
        parameters.setVolume(gain, start);
        return;
    }
    const MediaTime fadeInEnd = std::min(start + timelineTime(placement.fadeInDuration), end);
    const MediaTime fadeOutStart = std::max(end - timelineTime(placement.fadeOutDuration), fadeInEnd);
    if (fadeInEnd > start)
        writeSmoothRamp(parameters, true, gain, start, fadeInEnd);
    parameters.setVolumeRamp(gain, gain, {fadeInEnd, fadeOutStart - fadeInEnd});
    if (end > fadeOutStart)
        writeSmoothRamp(parameters, false, gain, fadeOutStart, end);
}

using ClipsByID = QHash<QUuid, const EditorSegment*>;

std::optional<AudioPlacement> placementOf(const EditorAudioPlacementRecord& record, const ClipsByID& clips,
                                          double clicks) {
    AudioPlacement placement{record.segmentID, record.editorTrackIndex, record.timeRange, 0, 0, clicks};
    if (!record.segmentID)
        return placement;
    const EditorSegment* clip = clips.value(*record.segmentID);
    if (!clip)
        return std::nullopt;
    const FadeLengths fades = normalizedFades(*clip);
    placement.fadeInDuration = fades.fadeIn;
    placement.fadeOutDuration = fades.fadeOut;
    placement.volume = clipGain(*clip);
    return placement;
}

} // namespace

bool isLiveClickTrack(const AssetTrack& track) {
    const bool isFloatingPoint = std::string_view(track.codecName).substr(0, 5) == "pcm_f";
    return track.kind == MediaKind::audio && isFloatingPoint && track.channelCount == 1 && track.sampleRate == 48000;
}

double clipGain(const EditorSegment& clip) {
    return clip.isMuted.value_or(false) ? 0 : gainOf(clip.volume);
}

double clickGain(const EditorProject& project) {
    return gainOf(project.clickSoundVolume);
}

std::optional<AudioMix> audioMix(const EditorProject& project, const Composition& composition,
                                 const std::optional<AudioMix>& currentMix,
                                 const QList<EditorAudioPlacementRecord>& placements) {
    if (placements.isEmpty())
        return currentMix;
    ClipsByID clips;
    for (const EditorSegment& clip : project.segments)
        clips.insert(clip.id, &clip);
    QHash<qint64, bool> rowMutes;
    const auto isRowMuted = [&](qint64 index) {
        const auto known = rowMutes.constFind(index);
        return known != rowMutes.constEnd() ? *known : *rowMutes.insert(index, track(project, index).isMuted);
    };

    std::map<std::int32_t, std::vector<AudioPlacement>> placementsByTrack;
    for (const EditorAudioPlacementRecord& record : placements) {
        if (!composition.track(record.trackID))
            continue;
        std::vector<AudioPlacement>& ofTrack = placementsByTrack[record.trackID];
        if (const auto placement = placementOf(record, clips, clickGain(project)))
            ofTrack.push_back(*placement);
    }
    AudioMix mix;
    for (auto& [trackID, ofTrack] : placementsByTrack) {
        std::stable_sort(ofTrack.begin(), ofTrack.end(), [](const AudioPlacement& a, const AudioPlacement& b) {
            return a.timeRange.start < b.timeRange.start;
        });
        AudioMixParameters& parameters = mix.parameters.emplace_back(trackID);
        for (const AudioPlacement& placement : ofTrack)
            writeGains(parameters, placement, isRowMuted(placement.editorTrackIndex));
    }
    return mix;
}

} // namespace keldra
