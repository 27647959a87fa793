#include "media/Composition.h"

#include "media/MediaError.h"

#include <algorithm>

namespace keldra {

Result<void> CompositionTrack::insertTimeRange(const MediaTimeRange& source, AssetPtr asset, int trackIndex,
                                               MediaTime target) {
    const bool isPlaceable = asset && !source.isEmpty() && source.start.isNumeric() && target.isNumeric() &&
                             source.start >= MediaTime::zero() && target >= MediaTime::zero();
    if (!isPlaceable)
        return fail(mediaError(MediaError::invalidRange, "A piece of a movie is empty or starts before zero."));
    const auto& tracks = asset->tracks();
    const bool isThere = std::any_of(tracks.begin(), tracks.end(), [&](const AssetTrack& track) {
        return track.index == trackIndex && track.kind == m_kind;
    });
    if (!isThere)
        return fail(mediaError(MediaError::noSuchTrack,
                               fileNameOf(asset->path()) + " has no such track " + std::to_string(trackIndex)));

    CompositionSegment segment{std::move(asset), trackIndex, source, target};
    const auto later =
        std::upper_bound(m_segments.begin(), m_segments.end(), target,
                         [](MediaTime time, const CompositionSegment& placed) { return time < placed.target; });
    const bool overlapsLater = later != m_segments.end() && later->target < segment.targetRange().end();
    const bool overlapsEarlier = later != m_segments.begin() && std::prev(later)->targetRange().end() > target;
    if (overlapsLater || overlapsEarlier)
        return fail(mediaError(MediaError::overlappingRange, "Two pieces of a track lie over each other."));
    m_segments.insert(later, std::move(segment));
    return {};
}

const CompositionSegment* CompositionTrack::segmentAt(MediaTime time) const {
    const auto later =
        std::upper_bound(m_segments.begin(), m_segments.end(), time,
                         [](MediaTime wanted, const CompositionSegment& placed) { return wanted < placed.target; });
    if (later == m_segments.begin())
        return nullptr;
    const CompositionSegment& found = *std::prev(later);
    return found.targetRange().contains(time) ? &found : nullptr;
}

CompositionTrack& Composition::addTrack(MediaKind kind) {
    m_tracks.push_back(std::make_unique<CompositionTrack>(std::int32_t(m_tracks.size() + 1), kind));
    return *m_tracks.back();
}

const CompositionTrack* Composition::track(std::int32_t trackID) const {
    const bool isThere = trackID >= 1 && std::size_t(trackID) <= m_tracks.size();
    return isThere ? m_tracks[std::size_t(trackID - 1)].get() : nullptr;
}

MediaTime Composition::duration() const {
    MediaTime end = MediaTime::zero();
    for (const auto& track : m_tracks)
        if (!track->segments().empty())
            end = std::max(end, track->segments().back().targetRange().end());
    return end;
}

} // namespace keldra
