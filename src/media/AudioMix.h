#pragma once

#include "base/MediaTime.h"

#include <cstdint>
#include <vector>

namespace keldra {

/// How loud one composition track is over time. A value; linear gains, 1 is as it is in the file.
///
/// Before the first instruction the gain is 1. A gain that is set holds until the next instruction; after a ramp its
/// end holds. Of instructions that start together the one given last counts, and one that starts during a ramp ends it.
class AudioMixParameters {
public:
    explicit AudioMixParameters(std::int32_t trackID) : m_trackID(trackID) {}

    std::int32_t trackID() const { return m_trackID; }

    void setVolume(float volume, MediaTime time);
    /// From the one gain at the range's start to the other at its end, in a straight line. An empty range is passed
    /// over.
    void setVolumeRamp(float startVolume, float endVolume, const MediaTimeRange& range);

    struct Instruction {
        /// Empty where a gain is set.
        MediaTimeRange range;
        float startVolume = 1;
        float endVolume = 1;

        friend bool operator==(const Instruction&, const Instruction&) = default;
    };
    /// Ordered by start.
    const std::vector<Instruction>& instructions() const { return m_instructions; }

    /// Multiplies `frameCount` interleaved frames by their gains. The first is sample `firstFrame` of a time line with
    /// `sampleRate` samples a second; an instruction takes hold at the first sample that is not before its start.
    void apply(float* samples, int channelCount, std::int64_t frameCount, std::int64_t firstFrame,
               int sampleRate) const;

    friend bool operator==(const AudioMixParameters&, const AudioMixParameters&) = default;

private:
    void insert(const Instruction& instruction);

    std::int32_t m_trackID;
    std::vector<Instruction> m_instructions;
};

/// The gains of a composition's sound. Tracks that are not listed sound as they are.
struct AudioMix {
    std::vector<AudioMixParameters> parameters;

    /// Null when the track is not listed.
    const AudioMixParameters* parametersOf(std::int32_t trackID) const;

    friend bool operator==(const AudioMix&, const AudioMix&) = default;
};

} // namespace keldra
