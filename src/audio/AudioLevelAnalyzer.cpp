#include "audio/AudioLevelAnalyzer.h"

#include "media/AudioTrackReader.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

constexpr int spanTimescale = 600;

/// Sums over samples; what is not a finite number counts as absent.
class LevelSums {
public:
    void add(const float* samples, std::int64_t count) {
        for (std::int64_t i = 0; i < count; ++i) {
            const double magnitude = std::abs(double(samples[i]));
            if (!std::isfinite(magnitude))
                continue;
            m_peak = std::max(m_peak, magnitude);
            m_sumOfSquares += magnitude * magnitude;
            m_count += 1;
        }
    }
    AudioLevels levels() const {
        if (m_count == 0)
            return {};
        return {std::min(m_peak, 1.0), std::sqrt(m_sumOfSquares / double(m_count))};
    }

private:
    double m_peak = 0;
    double m_sumOfSquares = 0;
    std::int64_t m_count = 0;
};

MediaTimeRange spanOf(double start, double duration) {
    const MediaTime from = MediaTime::fromSeconds(start > 0 ? start : 0, spanTimescale);
    return {from, duration > 0 ? MediaTime::fromSeconds(duration, spanTimescale) : MediaTime::indefinite()};
}

} // namespace

Error makeError(AnalyzerError code) {
    return {"AnalyzerError", int(code), {}, {}};
}

void AudioLevelAnalyzer::measure(const std::string& path, double start, double duration, Executor& answer,
                                 Completion<AudioLevels> done) {
    m_queue.post([this, path, start, duration, &answer, done = std::move(done)]() mutable {
        answer.post([done = std::move(done), levels = measureNow(path, start, duration)] { done(levels); });
    });
}

Result<AudioLevels> AudioLevelAnalyzer::measureNow(const std::string& path, double start, double duration) const {
    const Error unreadable = makeError(AnalyzerError::couldNotReadAudio);
    TRY_LET(const AssetPtr asset, Asset::open(path));
    const auto tracks = asset->tracks(MediaKind::audio);
    if (tracks.empty())
        return fail(makeError(AnalyzerError::noAudioTrack));
    const auto reader = AudioTrackReader::open(asset, tracks.front().index, {});
    if (!reader)
        return fail(unreadable);
    const AudioFormat& format = (*reader)->format();

    std::int64_t end = std::numeric_limits<std::int64_t>::max();
    if (duration > 0) {
        const MediaTimeRange span = spanOf(start, duration);
        end = firstSampleAt(span.end(), format.sampleRate);
        if (!(*reader)->seek(span.start))
            return fail(unreadable);
    }
    LevelSums sums;
    for (;;) {
        const auto buffer = (*reader)->next();
        if (!buffer || m_isClosing)
            return fail(unreadable);
        if (!*buffer || (**buffer).time().value() >= end)
            return sums.levels();
        const std::int64_t frames = std::min((**buffer).frameCount(), end - (**buffer).time().value());
        sums.add((**buffer).samples<float>(), frames * format.channelCount);
    }
}

std::optional<double> AudioLevelAnalyzer::normalizationGain(double peak, double rms) {
    constexpr double wantedRms = 0.1;
    constexpr double highestPeak = 0.891;
    if (!(rms > 0) || !std::isfinite(rms) || !(peak > 0) || !std::isfinite(peak))
        return std::nullopt;
    const double gain = std::min(wantedRms / rms, highestPeak / peak);
    if (!std::isfinite(gain))
        return std::nullopt;
    return std::clamp(gain, 0.05, 2.0);
}

} // namespace keldra
