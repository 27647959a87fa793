#include "media/PictureCache.h"

#include <iterator>

namespace keldra {

std::size_t PictureCache::bytesOf(const PixelBuffer& picture) {
    std::size_t bytes = 0;
    for (int plane = 0; plane < PixelBuffer::planeCount(picture.format()); ++plane)
        bytes += std::size_t(picture.strideBytes(plane)) * std::size_t(picture.planeHeight(plane));
    return bytes;
}

PictureCache::Track::const_iterator PictureCache::entryAt(const Track& track, MediaTime time) {
    const auto later = track.upper_bound(time);
    if (later == track.begin())
        return track.end();
    const auto found = std::prev(later);
    return found->second->range.contains(time) ? found : track.end();
}

void PictureCache::insert(const TrackKey& track, const MediaTimeRange& range, PixelBuffer picture) {
    const std::lock_guard guard(m_lock);
    if (const auto known = m_tracks[track].find(range.start); known != m_tracks[track].end())
        remove(known->second);
    m_usedBytes += bytesOf(picture);
    m_entries.push_front({track, range, std::move(picture)});
    m_tracks[track].emplace(range.start, m_entries.begin());
    while (m_usedBytes > m_budgetBytes && m_entries.size() > 1)
        remove(std::prev(m_entries.end()));
}

void PictureCache::remove(Entries::iterator entry) {
    m_usedBytes -= bytesOf(entry->picture);
    m_tracks[entry->track].erase(entry->range.start);
    m_entries.erase(entry);
}

PixelBuffer PictureCache::find(const TrackKey& track, MediaTime time) {
    const std::lock_guard guard(m_lock);
    const auto known = m_tracks.find(track);
    if (known == m_tracks.end())
        return {};
    const auto found = entryAt(known->second, time);
    if (found == known->second.end())
        return {};
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->picture;
}

std::optional<MediaTime> PictureCache::keptFrom(const TrackKey& track, MediaTime time) const {
    const std::lock_guard guard(m_lock);
    const auto known = m_tracks.find(track);
    if (known == m_tracks.end())
        return std::nullopt;
    auto at = entryAt(known->second, time);
    if (at == known->second.end())
        return std::nullopt;
    while (at != known->second.begin() && std::prev(at)->second->range.end() == at->first)
        --at;
    return at->first;
}

void PictureCache::touch(const TrackKey& track, const MediaTimeRange& range) {
    const std::lock_guard guard(m_lock);
    const auto known = m_tracks.find(track);
    if (known == m_tracks.end())
        return;
    auto each = known->second.lower_bound(range.start);
    for (; each != known->second.end() && each->first <= range.end(); ++each)
        m_entries.splice(m_entries.begin(), m_entries, each->second);
}

std::size_t PictureCache::usedBytes() const {
    const std::lock_guard guard(m_lock);
    return m_usedBytes;
}

} // namespace keldra
