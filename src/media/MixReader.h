#pragma once

#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/AudioMix.h"
#include "media/Composition.h"
#include "media/PlacedSound.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace keldra {

/// The sum of a composition's audio tracks with the gains of a mix, in float32. Nothing is clipped.
///
/// Time:    frame n stands at n / rate seconds of the composition. A piece sounds from the first frame that is not
///          before its start; a piece that goes on where the one before it in the file and in time left off is one with
///          it. What a frame holds does not depend on how it was reached.
/// Cost:    at most one open file for each composition track. Seeking costs nothing until something is read.
/// Threads: belongs to one at a time.
class MixReader {
public:
    struct Options {
        int sampleRate = 48000;
        int channelCount = 2;
    };

    MixReader(std::shared_ptr<const Composition> composition, std::optional<AudioMix> mix, Options options);

    const AudioFormat& format() const { return m_format; }
    /// Whether any piece of sound is placed.
    bool hasSound() const { return !m_lanes.empty(); }
    /// Of the whole composition, pictures too: every frame before its end.
    std::int64_t frameCount() const { return m_frameCount; }

    /// From the next frame on.
    void setMix(std::optional<AudioMix> mix) { m_mix = std::move(mix); }
    /// To the first frame that is not before `time`.
    void seek(MediaTime time);
    /// The next frames, `atMost` of them unless the composition ends before. Empty at its end.
    /// Errors: a file that cannot be read, by its name. The same frames are then tried again.
    [[nodiscard]] Result<AudioBuffer> next(std::int64_t atMost);

private:
    /// Pieces that play a track on without a seam.
    struct Run {
        AssetPtr asset;
        int trackIndex = 0;
        /// The time in the file that stands at the composition's zero.
        MediaTime offset;
        std::int64_t first = 0;
        std::int64_t end = 0;
    };
    struct Lane {
        std::int32_t trackID = 0;
        std::vector<Run> runs;
        /// Plays the run that was read last.
        std::unique_ptr<PlacedSound> sound;
    };

    Lane laneOf(const CompositionTrack& track) const;
    [[nodiscard]] Result<void> readLane(Lane& lane, std::int64_t count, float* frames);
    void place(Lane& lane, const Run& run) const;

    std::shared_ptr<const Composition> m_composition;
    std::optional<AudioMix> m_mix;
    AudioFormat m_format;
    std::int64_t m_frameCount;
    std::vector<Lane> m_lanes;
    std::int64_t m_position = 0;
    std::vector<float> m_laneFrames;
};

} // namespace keldra
