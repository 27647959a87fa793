#pragma once

#include "base/Result.h"
#include "media/PictureCache.h"
#include "media/TrackReader.h"

#include <memory>
#include <optional>

namespace keldra {

/// Decodes a track's pictures for reverse play: from key frame to key frame towards the start, into a cache. Belongs to
/// one thread at a time.
class BackwardReader {
public:
    BackwardReader(AssetPtr asset, int trackIndex, TrackReader::Options options, std::shared_ptr<PictureCache> cache);

    /// Decodes one more picture, so that in the end those on screen from `from` to `time` of the file's time line are
    /// kept. False when there is nothing left to do.
    [[nodiscard]] Result<bool> step(MediaTime from, MediaTime time);

private:
    [[nodiscard]] Result<void> begin(MediaTime target);

    AssetPtr m_asset;
    int m_trackIndex;
    TrackReader::Options m_options;
    std::shared_ptr<PictureCache> m_cache;
    PictureCache::TrackKey m_key;
    std::unique_ptr<TrackReader> m_reader;
    /// The run of pictures under way ends with the one on screen here.
    std::optional<MediaTime> m_target;
    /// A run to here was made and left nothing behind: there is no picture.
    std::optional<MediaTime> m_fruitless;
};

} // namespace keldra
