#include "media/CompositionReader.h"

namespace keldra {

CompositionReader::CompositionReader(std::shared_ptr<const Composition> composition, TrackReader::Options options,
                                     std::shared_ptr<PictureCache> cache)
    : m_composition(std::move(composition)), m_options(options), m_cache(std::move(cache)) {}

Result<CompositionReader::Frames> CompositionReader::framesAt(MediaTime time,
                                                              const std::vector<std::int32_t>& trackIDs) {
    Frames frames;
    for (const std::int32_t trackID : trackIDs) {
        const CompositionTrack* track = m_composition->track(trackID);
        if (track == nullptr || frames.count(trackID) != 0)
            continue;
        TRY_LET(PixelBuffer frame, frameOf(*track, time));
        if (frame)
            frames.emplace(trackID, std::move(frame));
    }
    return frames;
}

Result<PixelBuffer> CompositionReader::frameOf(const CompositionTrack& track, MediaTime time) {
    const CompositionSegment* segment = track.segmentAt(time);
    Source& source = m_sources[track.trackID()];
    if (segment == nullptr) {
        // A gap: lets go of the file and its decoder.
        source = Source();
        return PixelBuffer();
    }
    const bool isSameTrack =
        source.reader && source.trackIndex == segment->trackIndex && source.asset->path() == segment->asset->path();
    if (!isSameTrack) {
        source = Source{segment->asset, segment->trackIndex, nullptr};
        TRY_LET(source.reader, TrackReader::open(segment->asset, segment->trackIndex, m_options));
    }
    TRY(source.reader->seek(segment->source.start + (time - segment->target)));
    TRY_LET(const std::optional<VideoFrame> frame, source.reader->next());
    return frame ? frame->pixels : PixelBuffer();
}

} // namespace keldra
