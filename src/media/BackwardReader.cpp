#include "media/BackwardReader.h"

namespace keldra {

BackwardReader::BackwardReader(AssetPtr asset, int trackIndex, TrackReader::Options options,
                               std::shared_ptr<PictureCache> cache)
    : m_asset(std::move(asset))
    , m_trackIndex(trackIndex)
    , m_options(options)
    , m_cache(std::move(cache))
    , m_key(m_asset->path(), trackIndex) {}

Result<bool> BackwardReader::step(MediaTime from, MediaTime time) {
    const std::optional<MediaTime> kept = m_cache->keptFrom(m_key, time);
    if (kept && *kept <= from)
        return false;
    // The last moment of the picture before the kept ones.
    const MediaTime target = kept ? MediaTime(kept->value() - 1, kept->timescale()) : time;
    if (m_fruitless == target)
        return false;
    if (m_target != target)
        TRY(begin(target));

    TRY_LET(const std::optional<VideoFrame> frame, m_reader->next());
    if (frame && frame->end > from)
        m_cache->insert(m_key, {frame->time, frame->end - frame->time}, frame->pixels);
    if (!frame || frame->end > target) {
        m_target.reset();
        if (m_cache->keptFrom(m_key, time) == kept)
            m_fruitless = target;
    }
    return true;
}

Result<void> BackwardReader::begin(MediaTime target) {
    m_target.reset();
    if (!m_reader) {
        TRY_LET(m_reader, TrackReader::open(m_asset, m_trackIndex, m_options));
    }
    TRY(m_reader->seekToKeyFrame(target));
    m_target = target;
    return {};
}

} // namespace keldra
