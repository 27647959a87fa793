#pragma once

#include "base/Result.h"
#include "media/Asset.h"
#include "media/AudioBuffer.h"

#include <memory>
#include <optional>

namespace keldra {

/// Decodes the sound of one audio track, in order, at the track's own rate. Belongs to one thread at a time.
///
/// Time: exact to the sample, from the file's zero. Each buffer begins where the one before ended, or later: what lies
/// between is a hole of the file, or was damaged.
class AudioTrackReader {
public:
    struct Options {
        /// int16 or float32.
        SampleKind kind = SampleKind::float32;
        /// All channels as one, in such shares that nothing gets louder than full scale; else the track's own channels.
        bool isMono = false;
    };

    [[nodiscard]] static Result<std::unique_ptr<AudioTrackReader>> open(AssetPtr asset, int trackIndex,
                                                                        Options options);
    virtual ~AudioTrackReader() = default;

    /// Of every buffer.
    virtual const AudioFormat& format() const = 0;
    /// After this next() begins with the first sample that is not before `time`, or that follows a hole there; the
    /// samples are those that reading on from the start would have given.
    [[nodiscard]] virtual Result<void> seek(MediaTime time) = 0;
    /// Nothing at the end. Damaged packets are left out; only a file that cannot be read on is an error.
    [[nodiscard]] virtual Result<std::optional<AudioBuffer>> next() = 0;
};

} // namespace keldra
