#pragma once

#include "base/Result.h"
#include "media/Asset.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace keldra {

/// A piece of a file's track placed on the composition's time line.
struct CompositionSegment {
    AssetPtr asset;
    int trackIndex = 0;
    /// On the file's time line.
    MediaTimeRange source;
    /// Where it starts on the composition's time line; it lasts as long as `source`.
    MediaTime target;

    MediaTimeRange targetRange() const { return {target, source.duration}; }
};

/// One row of placed pieces, none overlapping another, ordered by time.
class CompositionTrack {
public:
    CompositionTrack(std::int32_t trackID, MediaKind kind) : m_trackID(trackID), m_kind(kind) {}

    std::int32_t trackID() const { return m_trackID; }
    MediaKind kind() const { return m_kind; }
    const std::vector<CompositionSegment>& segments() const { return m_segments; }

    /// Places a piece of a file's track. Errors: an empty or invalid range, or one that overlaps what is placed.
    [[nodiscard]] Result<void> insertTimeRange(const MediaTimeRange& source, AssetPtr asset, int trackIndex,
                                               MediaTime target);
    /// The piece at that time, or null.
    const CompositionSegment* segmentAt(MediaTime time) const;

private:
    std::int32_t m_trackID;
    MediaKind m_kind;
    std::vector<CompositionSegment> m_segments;
};

/// Media of several files in time. Built on one thread, then read from any.
class Composition {
public:
    /// The reference stays good until the composition goes. Track ids count from 1.
    CompositionTrack& addTrack(MediaKind kind);
    const CompositionTrack* track(std::int32_t trackID) const;
    const std::vector<std::unique_ptr<CompositionTrack>>& tracks() const { return m_tracks; }
    /// From zero to the end of the last piece.
    MediaTime duration() const;

private:
    std::vector<std::unique_ptr<CompositionTrack>> m_tracks;
};

} // namespace keldra
