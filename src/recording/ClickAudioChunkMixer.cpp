#include "recording/ClickAudioChunkMixer.h"

#include "recording/ClassicClickSound.h"

#include <algorithm>
#include <cmath>

namespace keldra {

std::vector<float> ClickAudioChunkMixer::softWaveform() {
    std::vector<float> samples(std::size_t(std::lround(0.055 * sampleRate)));
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double t = double(n) / sampleRate;
        const double tones = 0.62 * std::sin(2 * M_PI * 1850 * t) + 0.38 * std::sin(2 * M_PI * 920 * t);
        samples[n] = float(std::exp(-72 * t) * std::min(t / 0.0015, 1.0) * tones * 0.32);
    }
    return samples;
}

std::vector<float> ClickAudioChunkMixer::trimmed(const std::vector<float>& samples) {
    constexpr double rate = sampleRate;
    const auto loudest =
        std::max_element(samples.begin(), samples.end(), [](float a, float b) { return std::abs(a) < std::abs(b); });
    if (loudest == samples.end() || !(std::abs(*loudest) > 0))
        return {};
    const float magnitude = std::abs(*loudest);
    auto onset = loudest;
    while (onset != samples.begin() && std::abs(*(onset - 1)) > 0.05F * magnitude)
        --onset;
    const auto start = std::max<std::int64_t>(0, (onset - samples.begin()) - std::int64_t(rate * 0.002));
    const auto end = std::min(std::int64_t(samples.size()), start + std::int64_t(rate * 0.09));
    if (end <= start)
        return {};

    std::vector<float> cut(samples.begin() + start, samples.begin() + end);
    for (float& sample : cut)
        sample *= 0.9F / magnitude;
    const auto fadeIn = std::min(cut.size(), std::size_t(rate * 0.0005));
    for (std::size_t i = 0; i < fadeIn; ++i)
        cut[i] *= float(i) / float(fadeIn);
    const auto fadeOut = std::min(cut.size(), std::size_t(rate * 0.006));
    for (std::size_t i = 0; i < fadeOut; ++i)
        cut[cut.size() - 1 - i] *= float(i) / float(fadeOut);
    return cut;
}

std::vector<float> ClickAudioChunkMixer::loadClickWaveform(ClickSoundStyle style) {
    if (style == ClickSoundStyle::classic)
        if (const auto sound = readClassicClickSound())
            if (std::vector<float> waveform = trimmed(*sound); !waveform.empty())
                return waveform;
    return softWaveform();
}

std::vector<float> ClickAudioChunkMixer::mixChunk(std::int64_t firstSample, int length,
                                                  std::vector<PendingClick>& clicks,
                                                  const std::vector<float>& waveform) {
    std::vector<float> chunk(std::size_t(length), 0.0F);
    const auto waveformLength = std::int64_t(waveform.size());
    for (const PendingClick& click : clicks) {
        const std::int64_t offset = firstSample - click.startSample;
        const auto first = std::max<std::int64_t>(0, -offset);
        const auto end = std::min<std::int64_t>(length, waveformLength - offset);
        for (std::int64_t i = first; i < end; ++i)
            chunk[std::size_t(i)] += waveform[std::size_t(offset + i)];
    }
    std::erase_if(
        clicks, [&](const PendingClick& click) { return click.startSample + waveformLength <= firstSample + length; });
    return chunk;
}

} // namespace keldra
