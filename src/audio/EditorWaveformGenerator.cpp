#include "audio/EditorWaveformGenerator.h"

#include "audio/MonoSum.h"
#include "audio/WaveformPeaks.h"
#include "media/AudioTrackReader.h"
#include "media/MediaError.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// A file shorter than this is read in one go, in seconds.
constexpr double worthHalving = 60;
/// More than any file lasts, so that it can be counted in samples, in seconds.
constexpr double longestDuration = 1e12;
/// What is read on both sides of a stretch for the resampler's sake, in seconds.
constexpr double margin = 0.25;

int bucketsFor(double duration) {
    return int(std::clamp(duration * 120, 2400.0, 12000.0));
}

/// The decoders of all tracks; whichever is behind goes next, so that no track's sound piles up.
class Decoding {
public:
    /// Sound of a track, or the news that it is through.
    struct Piece {
        std::size_t track = 0;
        std::optional<AudioBuffer> sound;
    };

    /// From `begin` up to `end` at least, in seconds.
    Result<void> open(const AssetPtr& asset, double begin, double end) {
        m_end = end;
        for (const AssetTrack& track : asset->tracks(MediaKind::audio)) {
            Lane lane;
            TRY_LET(lane.reader, AudioTrackReader::open(asset, track.index, {SampleKind::int16, true}));
            if (begin > 0)
                TRY(lane.reader->seek(MediaTime::fromSeconds(begin, WaveformPeaks::sampleRate)));
            m_lanes.push_back(std::move(lane));
        }
        return {};
    }

    /// Nothing when all tracks are through.
    Result<std::optional<Piece>> next() {
        const auto slowest = std::min_element(m_lanes.begin(), m_lanes.end(), [](const Lane& a, const Lane& b) {
            return std::pair(!a.reader, a.reached) < std::pair(!b.reader, b.reached);
        });
        if (slowest == m_lanes.end() || !slowest->reader)
            return std::optional<Piece>();
        Piece piece{std::size_t(slowest - m_lanes.begin()), std::nullopt};
        if (slowest->reached < m_end) {
            TRY_LET(piece.sound, slowest->reader->next());
        }
        if (piece.sound)
            slowest->reached = piece.sound->endTime().seconds();
        else
            slowest->reader.reset();
        return std::optional(std::move(piece));
    }

private:
    struct Lane {
        std::unique_ptr<AudioTrackReader> reader;
        /// In seconds.
        double reached = 0;
    };
    std::vector<Lane> m_lanes;
    double m_end = 0;
};

/// Reads what the peaks look at.
Result<void> readStretch(const AssetPtr& asset, WaveformPeaks& peaks, const std::atomic<bool>& isClosing) {
    const auto secondsOf = [](std::int64_t sample) { return double(sample) / WaveformPeaks::sampleRate; };
    Decoding decoding;
    TRY(decoding.open(asset, secondsOf(peaks.stretch().begin) - margin, secondsOf(peaks.stretch().end) + margin));
    MonoSum sum(fileNameOf(asset->path()), asset->tracks(MediaKind::audio).size(), peaks);
    for (;;) {
        if (isClosing)
            return fail(mediaError(MediaError::cancelled, "The waveform was given up."));
        TRY_LET(const std::optional<Decoding::Piece> piece, decoding.next());
        if (!piece)
            return {};
        TRY(piece->sound ? sum.add(piece->track, *piece->sound) : sum.finish(piece->track));
    }
}

} // namespace

void EditorWaveformGenerator::generate(const std::string& path, std::optional<int> bucketCount, double duration,
                                       Executor& answer, Completion<EditorWaveform> done) {
    m_queue.post([this, path, bucketCount, duration, &answer, done = std::move(done)]() mutable {
        answer.post([done = std::move(done), made = generateNow(path, bucketCount, duration)] { done(made); });
    });
}

Result<EditorWaveform> EditorWaveformGenerator::generateNow(const std::string& path, std::optional<int> bucketCount,
                                                            double duration) {
    TRY_LET(const AssetPtr asset, Asset::open(path));
    if (asset->tracks(MediaKind::audio).empty() || !(duration > 0))
        return EditorWaveform::empty();
    const int count = std::max(1, bucketCount.value_or(bucketsFor(duration)));
    const std::int64_t middle = duration < worthHalving
                                    ? WaveformPeaks::Stretch().end
                                    : std::int64_t(std::min(duration / 2, longestDuration)) * WaveformPeaks::sampleRate;
    WaveformPeaks peaks(count, duration, {0, middle});
    WaveformPeaks laterPeaks(count, duration, {middle, WaveformPeaks::Stretch().end});
    Result<void> laterRead;
    if (duration >= worthHalving)
        m_secondQueue.post([&] { laterRead = readStretch(asset, laterPeaks, m_isClosing); });
    const Result<void> read = readStretch(asset, peaks, m_isClosing);
    // What was posted works on this function's own variables.
    m_secondQueue.sync([] {});
    TRY(read);
    TRY(laterRead);
    peaks.merge(laterPeaks);
    return EditorWaveform{peaks.heights(), duration};
}

} // namespace keldra
