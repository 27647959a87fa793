#pragma once

#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/Composition.h"
#include "media/FrameRequest.h"
#include "media/PictureCache.h"
#include "media/TrackReader.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace keldra {

/// The pictures of a composition's tracks at given times. Decodes only what is needed; a picture that still stands is
/// given again, the same pixels. Times that rise are cheap, others seek. Belongs to one thread at a time.
///
/// At most sixteen decoders are open, since each keeps many pictures: where more tracks lie over each other, the one
/// used longest ago makes room, and has to seek when it is its turn again.
class CompositionReader {
public:
    /// With a cache, pictures that are kept there are not decoded, and those decoded are kept.
    CompositionReader(std::shared_ptr<const Composition> composition, TrackReader::Options options,
                      std::shared_ptr<PictureCache> cache = nullptr);

    /// By track; a track without a picture at `time` is left out.
    [[nodiscard]] Result<TrackPictures> framesAt(MediaTime time, const std::vector<std::int32_t>& trackIDs);
    /// Of one track; no picture where it has none.
    [[nodiscard]] Result<PixelBuffer> frameAt(MediaTime time, std::int32_t trackID);

private:
    /// What a track reads from now. A reader outlives its segment when the next one cuts the same file further.
    struct Source {
        AssetPtr asset;
        int trackIndex = 0;
        std::unique_ptr<TrackReader> reader;
        std::uint64_t lastUse = 0;
    };

    [[nodiscard]] Result<PixelBuffer> frameOf(const CompositionTrack& track, MediaTime time);
    void makeRoom();

    std::shared_ptr<const Composition> m_composition;
    TrackReader::Options m_options;
    std::shared_ptr<PictureCache> m_cache;

    /// Only those with a reader.
    std::map<std::int32_t, Source> m_sources;
    std::uint64_t m_useCount = 0;
};

} // namespace keldra
