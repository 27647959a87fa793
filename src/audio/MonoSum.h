#pragma once

#include "audio/WaveformPeaks.h"
#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/MonoResampler.h"

#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace keldra {

/// Adds the tracks of a file up at 8000 Hz and hands the sum to the peaks, as far as every track has come. Belongs to
/// one thread at a time.
class MonoSum {
public:
    /// `fileName` is what errors speak of.
    MonoSum(std::string fileName, std::size_t trackCount, WaveformPeaks& peaks)
        : m_fileName(std::move(fileName)), m_lanes(trackCount), m_peaks(peaks) {}

    /// 16-bit mono sound of a track, in its order of time.
    [[nodiscard]] Result<void> add(std::size_t track, const AudioBuffer& sound);
    [[nodiscard]] Result<void> finish(std::size_t track);

private:
    struct Piece {
        /// Of the first sample, at 8000 Hz.
        std::int64_t position = 0;
        std::vector<std::int16_t> samples;
        std::int64_t end() const { return position + std::int64_t(samples.size()); }
    };
    struct Lane {
        std::unique_ptr<MonoResampler> resampler;
        int sampleRate = 0;
        /// Where the sound goes on, at its own rate and at 8000 Hz.
        std::int64_t expected = std::numeric_limits<std::int64_t>::min();
        std::int64_t reached = std::numeric_limits<std::int64_t>::min();
        std::deque<Piece> pieces;
    };

    [[nodiscard]] Result<void> startAt(Lane& lane, const AudioBuffer& sound);
    void append(Lane& lane, std::vector<std::int16_t> samples);
    /// Sums what lies before the slowest track's place.
    void sumUp();

    std::string m_fileName;
    std::vector<Lane> m_lanes;
    WaveformPeaks& m_peaks;
};

} // namespace keldra
