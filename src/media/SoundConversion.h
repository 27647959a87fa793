#pragma once

#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/Libav.h"

#include <string_view>

extern "C" {
#include <libswresample/swresample.h>
}

// For the .cpp files of this folder only: libswresample with our choice of how channels become other channels.

namespace keldra {

struct SwrDelete {
    void operator()(SwrContext* context) const { swr_free(&context); }
};
using SwrPtr = std::unique_ptr<SwrContext, SwrDelete>;

/// One end of a conversion. Channels whose places are not known count as so many.
struct SoundEnd {
    AVSampleFormat format = AV_SAMPLE_FMT_NONE;
    int sampleRate = 0;
    AVChannelLayout channels{};
};
SoundEnd soundEndOf(const AVFrame& frame);
/// int24 has no counterpart in libav.
SoundEnd soundEndOf(const AudioFormat& format);

/// Mono goes to every channel as it is; more channels go to fewer in such shares that nothing gets louder than full
/// scale. `filterSize` is the resampling filter's length at the lower rate, in samples.
/// Errors: more than 64 channels, rates that nobody uses; `subject` names what was to be converted.
[[nodiscard]] Result<SwrPtr> makeSoundConversion(const SoundEnd& from, const SoundEnd& to, std::string_view subject,
                                                 int filterSize = 32);

} // namespace keldra
