#include "composition/EditorCompositionBuilder.h"

#include "composition/TimelineIntervals.h"
#include "composition/Transforms.h"
#include "composition/VideoInstructions.h"
#include "project/Timeline.h"

#include <algorithm>
#include <vector>

namespace keldra {
namespace {

const AssetTrack* firstVideoTrack(const Asset& asset) {
    const auto found = std::find_if(asset.tracks().begin(), asset.tracks().end(),
                                    [](const AssetTrack& track) { return track.kind == MediaKind::video; });
    return found == asset.tracks().end() ? nullptr : &*found;
}

QUrl mediaOf(const EditorSegment& clip, const EditorProject& project) {
    return clip.sourceURL.value_or(project.sourceURL);
}

ClipTransform placeOf(const AssetTrack& source, const VideoSettings& settings, const CanvasStyle& style) {
    return clipTransform(toQTransform(source.preferredTransform), {source.naturalSize.width, source.naturalSize.height},
                         settings.renderSize, style);
}

/// Composition tracks of one kind, as few as overlaps allow: a clip takes the first that is free.
class TrackSlots {
public:
    TrackSlots(Composition& composition, MediaKind kind) : m_composition(composition), m_kind(kind) {}

    /// A track with nothing in `target`, which is then taken. Targets come ordered by start, so that a slot is free
    /// when its last end has passed.
    CompositionTrack& take(const MediaTimeRange& target) {
        auto slot = std::find_if(m_slots.begin(), m_slots.end(),
                                 [&](const TrackSlot& candidate) { return candidate.occupiedUntil <= target.start; });
        if (slot == m_slots.end())
            slot = m_slots.insert(m_slots.end(), {&m_composition.addTrack(m_kind), MediaTime::zero()});
        slot->occupiedUntil = target.end();
        return *slot->track;
    }

private:
    struct TrackSlot {
        CompositionTrack* track;
        MediaTime occupiedUntil;
    };

    Composition& m_composition;
    MediaKind m_kind;
    std::vector<TrackSlot> m_slots;
};

/// Places the piece of the file's first picture track that the clip shows. Answers the track it went to, or nothing
/// when there is no such piece.
Result<const CompositionTrack*> placePicture(const EditorSegment& clip, const AssetPtr& asset, TrackSlots& videoSlots) {
    const AssetTrack* source = firstVideoTrack(*asset);
    if (!source)
        return nullptr;
    const MediaTime duration = timelineTime(clip.duration);
    const MediaTimeRange wanted{timelineTime(clip.sourceStart), duration};
    const MediaTimeRange piece = source->isStill ? wanted : wanted.intersection(withinTimelineTicks(source->timeRange));
    if (piece.isEmpty())
        return nullptr;
    const MediaTimeRange target{timelineTime(clip.timelineStart), duration};
    CompositionTrack& track = videoSlots.take(target);
    // Media that starts later than the clip is shown later, too.
    TRY(track.insertTimeRange(piece, asset, source->index, target.start + (piece.start - wanted.start)));
    return &track;
}

/// Places the piece of each of the file's sounds that the clip plays. The sounds of one clip never share a track.
Result<void> placeSounds(const EditorSegment& clip, const AssetPtr& asset, bool hasLiveClickTrack,
                         TrackSlots& audioSlots, QList<EditorAudioPlacementRecord>& placements) {
    const MediaTimeRange target{timelineTime(clip.timelineStart), timelineTime(clip.duration)};
    for (const AssetTrack& source : asset->tracks()) {
        if (source.kind != MediaKind::audio)
            continue;
        const MediaTimeRange wanted{timelineTime(clip.sourceStart), target.duration};
        const MediaTimeRange piece = wanted.intersection(withinTimelineTicks(source.timeRange));
        if (piece.isEmpty())
            continue;
        CompositionTrack& track = audioSlots.take(target);
        TRY(track.insertTimeRange(piece, asset, source.index, target.start + (piece.start - wanted.start)));
        EditorAudioPlacementRecord placement{track.trackID(), clip.id, clip.trackIndex, target};
        if (hasLiveClickTrack && isLiveClickTrack(source))
            placement.segmentID.reset();
        placements.append(placement);
    }
    return {};
}

QCoro::Task<Result<EditorCompositionOutput>> buildOutput(AssetLoader loadAsset, MainTurn turn, EditorProject project) {
    turn.begin();
    const auto settings = videoSettings(project);
    if (!settings)
        co_return fail(settings.error());

    AssetCache assets(std::move(loadAsset));
    const auto composition = std::make_shared<Composition>();
    TrackSlots videoSlots(*composition, MediaKind::video);
    TrackSlots audioSlots(*composition, MediaKind::audio);
    const CanvasStyle style = project.style();
    const QList<EditorSegment> clips = visibleSegments(project);
    PlacedPictures pictures;
    EditorCompositionOutput output;
    for (const EditorSegment& clip : clips) {
        if (turn.isOver())
            co_await turn.next();
        const Result<AssetPtr> asset = co_await assets.open(mediaOf(clip, project));
        if (!asset)
            co_return fail(asset.error());
        if (track(project, clip.trackIndex).kind == EditorTrackKind::video) {
            const auto placed = placePicture(clip, *asset, videoSlots);
            if (!placed)
                co_return fail(placed.error());
            if (const CompositionTrack* picture = *placed) {
                pictures.insert(clip.id, {picture->trackID(), placeOf(*firstVideoTrack(**asset), *settings, style)});
                output.videoTrackIDsBySegment.insert(clip.id, picture->trackID());
            }
        }
        const auto sounded =
            placeSounds(clip, *asset, project.hasLiveClickTrack.value_or(false), audioSlots, output.audioPlacements);
        if (!sounded)
            co_return fail(sounded.error());
    }

    if (!pictures.isEmpty()) {
        auto videoComposition = co_await makeVideoComposition(project, clips, *settings, pictures, composition, turn);
        if (!videoComposition)
            co_return fail(videoComposition.error());
        output.videoComposition = std::move(*videoComposition);
    }
    output.audioMix = audioMix(project, *composition, std::nullopt, output.audioPlacements);
    output.composition = composition;
    co_return output;
}

QCoro::Task<Result<VideoComposition>> refreshedVideo(AssetLoader loadAsset, MainTurn turn, EditorProject project,
                                                     std::shared_ptr<const Composition> composition,
                                                     QHash<QUuid, std::int32_t> trackIDs) {
    turn.begin();
    const auto settings = videoSettings(project);
    if (!settings)
        co_return fail(settings.error());

    AssetCache assets(std::move(loadAsset));
    const CanvasStyle style = project.style();
    const QList<EditorSegment> clips = visibleSegments(project);
    PlacedPictures pictures;
    for (const EditorSegment& clip : clips) {
        if (turn.isOver())
            co_await turn.next();
        const auto trackID = trackIDs.constFind(clip.id);
        const bool isPlaced = trackID != trackIDs.constEnd() && composition->track(*trackID) &&
                              track(project, clip.trackIndex).kind == EditorTrackKind::video;
        if (!isPlaced)
            continue;
        const Result<AssetPtr> asset = co_await assets.open(mediaOf(clip, project));
        if (!asset)
            co_return fail(asset.error());
        if (const AssetTrack* source = firstVideoTrack(**asset))
            pictures.insert(clip.id, {*trackID, placeOf(*source, *settings, style)});
    }
    co_return co_await makeVideoComposition(project, clips, *settings, pictures, composition, turn);
}

} // namespace

// Free coroutines: the builder may go while they wait.
QCoro::Task<Result<EditorCompositionOutput>> EditorCompositionBuilder::build(EditorProject project) const {
    return buildOutput(m_loadAsset, m_turn, std::move(project));
}

QCoro::Task<Result<VideoComposition>>
EditorCompositionBuilder::refreshVideoComposition(EditorProject project, std::shared_ptr<const Composition> composition,
                                                  QHash<QUuid, std::int32_t> videoTrackIDsBySegment) const {
    return refreshedVideo(m_loadAsset, m_turn, std::move(project), std::move(composition),
                          std::move(videoTrackIDsBySegment));
}

SourceFacts sourceFacts(const Asset& asset) {
    SourceFacts facts;
    facts.durationSeconds = asset.duration().seconds();
    if (const AssetTrack* video = firstVideoTrack(asset))
        facts.video = SourceFacts::Video{video->nominalFrameRate,
                                         {video->naturalSize.width, video->naturalSize.height},
                                         toQTransform(video->preferredTransform)};
    return facts;
}

} // namespace keldra
