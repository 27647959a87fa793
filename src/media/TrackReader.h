#pragma once

#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/Asset.h"

#include <memory>
#include <optional>

namespace keldra {

/// One decoded picture and when it is shown, on the file's time line.
struct VideoFrame {
    PixelBuffer pixels;
    MediaTime time;
    /// When the next one takes its place; indefinite for the last.
    MediaTime end;
};

/// Decodes the pictures of one video track in the order shown. Belongs to one thread at a time.
///
/// Space: pictures as coded (the preferred transform is not applied), scaled to square pixels.
class TrackReader {
public:
    struct Options {
        /// What is wanted. Asked for 4:2:0, a movie with finer chroma gives BGRA.
        PixelFormat format = PixelFormat::bgra;
        int threadCount = 2;
    };

    [[nodiscard]] static Result<std::unique_ptr<TrackReader>> open(AssetPtr asset, int trackIndex, Options options);
    virtual ~TrackReader() = default;

    /// After this next() gives the picture that is on screen at `time`: the last one that starts at or before it,
    /// or the first of the track when there is none.
    [[nodiscard]] virtual Result<void> seek(MediaTime time) = 0;
    /// After this next() gives a picture at or before `time` from which the file can be decoded.
    [[nodiscard]] virtual Result<void> seekToKeyFrame(MediaTime time) = 0;
    /// Nothing at the end. Damaged pictures are left out; only a file that cannot be read on is an error.
    [[nodiscard]] virtual Result<std::optional<VideoFrame>> next() = 0;
};

} // namespace keldra
