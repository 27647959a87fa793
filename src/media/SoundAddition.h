#pragma once

#include "media/AudioBuffer.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace keldra {

/// Sound that is put into a movie: gives one channel at 48 kHz for `count` frames from `firstFrame` on, counted from
/// the file's zero. Asked in order, each frame once.
using SoundAddition = std::function<std::vector<float>(std::int64_t firstFrame, std::int64_t count)>;

constexpr int addedSoundRate = 48000;

/// Adds one channel to every channel of interleaved samples; what goes beyond full scale is cut in whole numbers, and
/// kept in floats.
void addSamples(std::byte* interleaved, const AudioFormat& format, const std::vector<float>& added);

} // namespace keldra
