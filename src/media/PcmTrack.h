#pragma once

#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/Libav.h"
#include "media/MovieMuxer.h"

#include <optional>

namespace keldra {

/// Adds a track of plain PCM before the muxer begins, in ticks of its frames. It is flagged default, so that players
/// mix all such tracks and not only the first.
[[nodiscard]] Result<AVStream*> addPcmTrack(MovieMuxer& muxer, const AudioFormat& format);

/// How a codec of ours stores samples; nothing for any other.
std::optional<SampleKind> sampleKindOf(AVCodecID codec);

} // namespace keldra
