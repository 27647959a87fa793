#include "media/BackwardReader.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// How far ahead reverse play is read, in seconds.
constexpr double mostSeconds = 1;

} // namespace

BackwardReader::BackwardReader(AssetPtr asset, int trackIndex, TrackReader::Options options,
                               std::shared_ptr<PictureCache> cache)
    : m_asset(std::move(asset))
    , m_trackIndex(trackIndex)
    , m_options(options)
    , m_cache(std::move(cache))
    , m_key(m_asset->path(), trackIndex)
    , m_enoughSeconds(mostSeconds) {}

Result<bool> BackwardReader::step(MediaTime first, MediaTime time, Want want) {
    const std::optional<MediaTime> kept = m_cache->keptFrom(m_key, time);
    if (kept && (want == Want::picture || *kept <= first))
        return false;
    // The last moment of the picture before the kept ones.
    const MediaTime target = kept ? MediaTime(kept->value() - 1, kept->timescale()) : time;
    if (m_fruitless == target)
        return false;
    if (!m_run || !m_run->leadsTo(target)) {
        // A run at a time: a new one for each picture would decode all before it over and over.
        if (kept && (time - *kept).seconds() >= m_enoughSeconds)
            return false;
        if (kept)
            m_cache->touch(m_key, {*kept, time - *kept});
        TRY(begin(target));
    }

    TRY_LET(const std::optional<VideoFrame> frame, m_reader->next());
    if (frame)
        keep(*frame);
    if (!frame || frame->end > m_run->target) {
        m_run.reset();
        if (m_cache->keptFrom(m_key, time) == kept)
            m_fruitless = target;
    }
    return true;
}

Result<void> BackwardReader::begin(MediaTime target) {
    m_run.reset();
    if (!m_reader) {
        TRY_LET(m_reader, TrackReader::open(m_asset, m_trackIndex, m_options));
    }
    TRY(m_reader->seekToKeyFrame(target));
    m_run = Run{target, std::nullopt, MediaTime::zero()};
    return {};
}

void BackwardReader::keep(const VideoFrame& frame) {
    if (!m_run->start)
        m_run->start = frame.time;
    m_run->end = frame.end;
    const double seconds = (frame.end - frame.time).seconds();
    double room = mostSeconds;
    if (std::isfinite(seconds) && seconds > 0) {
        const std::size_t bytes = std::max<std::size_t>(PictureCache::bytesOf(frame.pixels), 1);
        room = std::max(double(m_cache->budgetBytes() / 2 / bytes), 1.0) * seconds;
        m_enoughSeconds = std::min(room, mostSeconds);
    }
    // Where key frames are far apart, only the last pictures of a run have room.
    if (frame.end > m_run->target || (m_run->target - frame.end).seconds() < room)
        m_cache->insert(m_key, {frame.time, frame.end - frame.time}, frame.pixels);
}

} // namespace keldra
