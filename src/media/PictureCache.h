#pragma once

#include "base/MediaTime.h"
#include "imaging/PixelBuffer.h"

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace keldra {

/// Decoded pictures of files, kept for whoever comes back to them: scrubbing and reverse play. Pictures used longest
/// ago go first. Any thread.
class PictureCache {
public:
    /// A file's track: its path and the track's number.
    using TrackKey = std::pair<std::string, int>;

    explicit PictureCache(std::size_t budgetBytes) : m_budgetBytes(budgetBytes) {}

    /// Keeps a picture that is on screen during `range` of the file's time line.
    void insert(const TrackKey& track, const MediaTimeRange& range, PixelBuffer picture);
    /// The picture on screen at `time`; none when it is not kept.
    PixelBuffer find(const TrackKey& track, MediaTime time);
    /// From where on pictures are kept without a hole up to the one on screen at `time`; nothing when that is not kept.
    std::optional<MediaTime> keptFrom(const TrackKey& track, MediaTime time) const;

    /// Counts the pictures that begin in `range`, its end included, as used just now.
    void touch(const TrackKey& track, const MediaTimeRange& range);

    static std::size_t bytesOf(const PixelBuffer& picture);
    std::size_t budgetBytes() const { return m_budgetBytes; }
    std::size_t usedBytes() const;

private:
    struct Entry {
        TrackKey track;
        MediaTimeRange range;
        PixelBuffer picture;
    };
    using Entries = std::list<Entry>;
    using Track = std::map<MediaTime, Entries::iterator>;

    static Track::const_iterator entryAt(const Track& track, MediaTime time);
    void remove(Entries::iterator entry);

    const std::size_t m_budgetBytes;
    mutable std::mutex m_lock;
    /// Used last comes first.
    Entries m_entries;
    std::map<TrackKey, Track> m_tracks;
    std::size_t m_usedBytes = 0;
};

} // namespace keldra
