#include "audio/EditorWaveformGenerator.h"

#include "audio/MonoSum.h"
#include "audio/WaveformPeaks.h"
#include "media/AudioTrackReader.h"
#include "media/BoundedQueue.h"
#include "media/MediaError.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Frames that go to the other thread at once: enough to make the hand-over cheap, few enough for its cache.
constexpr std::int64_t framesPerBatch = 32768;
constexpr std::size_t batchesAhead = 4;

int bucketsFor(double duration) {
    return int(std::clamp(duration * 120, 2400.0, 12000.0));
}

} // namespace

/// Some sound of one track, on its way from the decoder to the peaks.
struct EditorWaveformGenerator::Batch {
    std::size_t track = 0;
    std::vector<AudioBuffer> sound;
    bool isLast = false;
};

/// The decoders of all tracks; whichever is behind goes next, so that no track's sound piles up.
class EditorWaveformGenerator::Decoding {
public:
    Result<void> open(const AssetPtr& asset) {
        for (const AssetTrack& track : asset->tracks(MediaKind::audio)) {
            Lane lane;
            TRY_LET(lane.reader, AudioTrackReader::open(asset, track.index, {SampleKind::int16, true}));
            m_lanes.push_back(std::move(lane));
        }
        return {};
    }

    /// Nothing when all tracks are through.
    Result<std::optional<Batch>> next() {
        const auto slowest = std::min_element(m_lanes.begin(), m_lanes.end(), [](const Lane& a, const Lane& b) {
            return std::pair(!a.reader, a.reached) < std::pair(!b.reader, b.reached);
        });
        if (slowest == m_lanes.end() || !slowest->reader)
            return std::optional<Batch>();
        Batch batch;
        batch.track = std::size_t(slowest - m_lanes.begin());
        for (std::int64_t frames = 0; frames < framesPerBatch;) {
            TRY_LET(std::optional<AudioBuffer> buffer, slowest->reader->next());
            if (!buffer) {
                slowest->reader.reset();
                batch.isLast = true;
                break;
            }
            frames += buffer->frameCount();
            slowest->reached = buffer->endTime().seconds();
            batch.sound.push_back(std::move(*buffer));
        }
        return std::optional(std::move(batch));
    }

private:
    struct Lane {
        std::unique_ptr<AudioTrackReader> reader;
        /// In seconds.
        double reached = 0;
    };
    std::vector<Lane> m_lanes;
};

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
    WaveformPeaks peaks(std::max(1, bucketCount.value_or(bucketsFor(duration))), duration);
    TRY(takePeaks(asset, peaks));
    return EditorWaveform{peaks.heights(), duration};
}

Result<void> EditorWaveformGenerator::takePeaks(const AssetPtr& asset, WaveformPeaks& peaks) {
    Decoding decoding;
    TRY(decoding.open(asset));
    MonoSum sum(fileNameOf(asset->path()), asset->tracks(MediaKind::audio).size(), peaks);
    BoundedQueue<Batch> underWay(batchesAhead);
    Result<void> taken;
    m_peakQueue.post([&] {
        while (const auto batch = underWay.pop()) {
            for (const AudioBuffer& sound : batch->sound)
                if (taken)
                    taken = sum.add(batch->track, sound);
            if (taken && batch->isLast)
                taken = sum.finish(batch->track);
            if (!taken)
                underWay.stop();
        }
    });
    const auto decodeAll = [&]() -> Result<void> {
        for (;;) {
            if (m_isClosing)
                return fail(mediaError(MediaError::cancelled, "The waveform was given up."));
            TRY_LET(std::optional<Batch> batch, decoding.next());
            if (!batch || !underWay.push(std::move(*batch)))
                return {};
        }
    };
    const Result<void> decoded = decodeAll();
    if (decoded)
        underWay.finish();
    else
        underWay.stop();
    // What was posted works on this function's own variables.
    m_peakQueue.sync([] {});
    TRY(taken);
    return decoded;
}

} // namespace keldra
