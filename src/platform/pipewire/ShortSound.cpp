#include "platform/pipewire/ShortSound.h"

#include "media/AudioSink.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

namespace keldra {
namespace {

/// A tone that is struck and rings out.
struct Partial {
    double start;
    double frequency;
    double loudness;
    /// Seconds until it has fallen to 1/e.
    double decay;
};

/// A small bar of glass: its modes are no harmonics of each other.
constexpr Partial tink[] = {
    {0, 2093.0, 1.0, 0.035}, {0, 2093.0 * 2.756, 0.45, 0.018}, {0, 2093.0 * 5.404, 0.15, 0.008}};

/// Three notes of a rising chord, each with its octave, that end together.
constexpr Partial hero[] = {{0, 523.25, 0.8, 0.16},     {0, 1046.5, 0.25, 0.10},   {0.09, 659.25, 0.8, 0.18},
                            {0.09, 1318.5, 0.25, 0.12}, {0.18, 1046.5, 1.0, 0.22}, {0.18, 1568.0, 0.35, 0.20},
                            {0.18, 2093.0, 0.2, 0.12}};

double valueAt(const Partial& partial, double seconds) {
    constexpr double attack = 0.002;
    const double since = seconds - partial.start;
    if (since < 0)
        return 0;
    return partial.loudness * std::min(1.0, since / attack) * std::exp(-since / partial.decay) *
           std::sin(2 * std::numbers::pi * partial.frequency * since);
}

std::vector<float> draw(std::span<const Partial> partials, double seconds) {
    constexpr double fade = 0.02, loudest = 0.25;
    const auto frames = std::size_t(seconds * AudioSink::sampleRate);
    std::vector<double> line(frames);
    double peak = 0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double time = double(frame) / AudioSink::sampleRate;
        for (const Partial& partial : partials)
            line[frame] += valueAt(partial, time);
        line[frame] *= std::min(1.0, (seconds - time) / fade);
        peak = std::max(peak, std::abs(line[frame]));
    }
    std::vector<float> sound;
    sound.reserve(frames * AudioSink::channelCount);
    for (const double value : line)
        sound.insert(sound.end(), AudioSink::channelCount, float(value / peak * loudest));
    return sound;
}

} // namespace

std::vector<float> shortSound(const QString& name) {
    if (name == u"Tink")
        return draw(tink, 0.15);
    if (name == u"Hero")
        return draw(hero, 0.75);
    return {};
}

} // namespace keldra
