#include "media/MonoMix.h"

#include <algorithm>

// Loops that the compiler turns into vector code.

namespace keldra {
namespace {

/// A NaN becomes silence.
std::int16_t rounded(float scaled) {
    const float known = scaled == scaled ? scaled : 0.0F;
    const float limited = std::min(32767.0F, std::max(-32768.0F, known));
    return std::int16_t(int(limited + (limited < 0 ? -0.5F : 0.5F)));
}

void mixPairs(const std::int16_t* __restrict pairs, std::int16_t* __restrict mono, int count) {
    for (int i = 0; i < count; ++i)
        mono[i] = std::int16_t((pairs[2 * i] + pairs[2 * i + 1]) >> 1);
}

void mixPlanes(const float* __restrict left, const float* __restrict right, std::int16_t* __restrict mono, int count) {
    for (int i = 0; i < count; ++i)
        mono[i] = rounded((left[i] + right[i]) * 16384.0F);
}

void mixFloatPairs(const float* __restrict pairs, std::int16_t* __restrict mono, int count) {
    for (int i = 0; i < count; ++i)
        mono[i] = rounded((pairs[2 * i] + pairs[2 * i + 1]) * 16384.0F);
}

void convertFloats(const float* __restrict samples, std::int16_t* __restrict mono, int count) {
    for (int i = 0; i < count; ++i)
        mono[i] = rounded(samples[i] * 32768.0F);
}

template <typename Sample>
const Sample* samplesOf(const DecodedSound& sound, int plane, int samplesPerFrame) {
    return reinterpret_cast<const Sample*>(sound.frame->extended_data[plane]) +
           std::ptrdiff_t(sound.offset) * samplesPerFrame;
}

} // namespace

bool mixToMono(const DecodedSound& sound, std::int16_t* mono) {
    const int channels = sound.frame->ch_layout.nb_channels;
    const auto format = AVSampleFormat(sound.frame->format);
    if (channels == 2 && format == AV_SAMPLE_FMT_S16)
        mixPairs(samplesOf<std::int16_t>(sound, 0, 2), mono, sound.frameCount);
    else if (channels == 2 && format == AV_SAMPLE_FMT_FLTP)
        mixPlanes(samplesOf<float>(sound, 0, 1), samplesOf<float>(sound, 1, 1), mono, sound.frameCount);
    else if (channels == 2 && format == AV_SAMPLE_FMT_FLT)
        mixFloatPairs(samplesOf<float>(sound, 0, 2), mono, sound.frameCount);
    else if (channels == 1 && (format == AV_SAMPLE_FMT_FLT || format == AV_SAMPLE_FMT_FLTP))
        convertFloats(samplesOf<float>(sound, 0, 1), mono, sound.frameCount);
    else
        return false;
    return true;
}

} // namespace keldra
