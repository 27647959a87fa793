#include "media/CompositionReader.h"

#include <algorithm>

namespace keldra {

CompositionReader::CompositionReader(std::shared_ptr<const Composition> composition, TrackReader::Options options,
                                     std::shared_ptr<PictureCache> cache)
    : m_composition(std::move(composition)), m_options(options), m_cache(std::move(cache)) {}

Result<TrackPictures> CompositionReader::framesAt(MediaTime time, const std::vector<std::int32_t>& trackIDs) {
    TrackPictures frames;
    for (const std::int32_t trackID : trackIDs) {
        if (frames.count(trackID) != 0)
            continue;
        TRY_LET(PixelBuffer frame, frameAt(time, trackID));
        if (frame)
            frames.emplace(trackID, std::move(frame));
    }
    return frames;
}

Result<PixelBuffer> CompositionReader::frameAt(MediaTime time, std::int32_t trackID) {
    const CompositionTrack* track = m_composition->track(trackID);
    return track == nullptr ? PixelBuffer() : frameOf(*track, time);
}

void CompositionReader::makeRoom() {
    constexpr std::size_t mostReaders = 16;
    if (m_sources.size() < mostReaders)
        return;
    m_sources.erase(std::min_element(m_sources.begin(), m_sources.end(),
                                     [](const auto& a, const auto& b) { return a.second.lastUse < b.second.lastUse; }));
}

Result<PixelBuffer> CompositionReader::frameOf(const CompositionTrack& track, MediaTime time) {
    const CompositionSegment* segment = track.segmentAt(time);
    auto found = m_sources.find(track.trackID());
    const bool isSameTrack = segment != nullptr && found != m_sources.end() &&
                             found->second.trackIndex == segment->trackIndex &&
                             found->second.asset->path() == segment->asset->path();
    // In a gap, or at another file, lets go of the file and its decoder.
    if (found != m_sources.end() && !isSameTrack)
        m_sources.erase(found);
    if (segment == nullptr)
        return PixelBuffer();
    const MediaTime sourceTime = segment->source.start + (time - segment->target);
    if (m_cache) {
        if (PixelBuffer kept = m_cache->find({segment->asset->path(), segment->trackIndex}, sourceTime))
            return kept;
    }
    if (!isSameTrack) {
        makeRoom();
        TRY_LET(auto reader, TrackReader::open(segment->asset, segment->trackIndex, m_options));
        found =
            m_sources.emplace(track.trackID(), Source{segment->asset, segment->trackIndex, std::move(reader)}).first;
    }
    Source& source = found->second;
    source.lastUse = ++m_useCount;
    TRY(source.reader->seek(sourceTime));
    TRY_LET(const std::optional<VideoFrame> frame, source.reader->next());
    if (m_cache && frame)
        m_cache->insert({segment->asset->path(), segment->trackIndex}, {frame->time, frame->end - frame->time},
                        frame->pixels);
    return frame ? frame->pixels : PixelBuffer();
}

} // namespace keldra
