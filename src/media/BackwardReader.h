#pragma once

#include "base/Result.h"
#include "media/PictureCache.h"
#include "media/TrackReader.h"

#include <memory>
#include <optional>

namespace keldra {

/// Decodes a track's pictures for reverse play, into a cache: forwards, in runs that begin at a key frame, each run
/// before the one that was made last. What a run passes by is kept, so that a picture is decoded once where the cache
/// has room for two runs. Belongs to one thread at a time.
///
///     key frame                     key frame
///     |----- next run ----- target| kept ......... time |
class BackwardReader {
public:
    enum class Want {
        picture, ///< the one on screen at the time, at once
        ahead    ///< those before it too, as long as not enough of them are kept
    };

    BackwardReader(AssetPtr asset, int trackIndex, TrackReader::Options options, std::shared_ptr<PictureCache> cache);

    /// Decodes one more picture for play that comes back from `time` to `first` (of the file's time line). False when
    /// there is nothing left to do.
    [[nodiscard]] Result<bool> step(MediaTime first, MediaTime time, Want want);

private:
    struct Run {
        /// It ends with the picture on screen here.
        MediaTime target;
        /// Where its first picture begins and its latest one ends; nothing before the first.
        std::optional<MediaTime> start;
        MediaTime end;

        bool leadsTo(MediaTime moment) const {
            return moment <= target && (!start || (*start <= moment && end <= moment));
        }
    };

    [[nodiscard]] Result<void> begin(MediaTime target);
    void keep(const VideoFrame& frame);

    AssetPtr m_asset;
    int m_trackIndex;
    TrackReader::Options m_options;
    std::shared_ptr<PictureCache> m_cache;
    PictureCache::TrackKey m_key;
    std::unique_ptr<TrackReader> m_reader;
    std::optional<Run> m_run;
    /// So many seconds of pictures are enough; as many as half the cache takes, at most.
    double m_enoughSeconds;
    /// A run to here was made and left nothing behind: there is no picture.
    std::optional<MediaTime> m_fruitless;
};

} // namespace keldra
