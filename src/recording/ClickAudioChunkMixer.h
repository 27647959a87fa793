#pragma once

#include "recording/ClickSoundStyle.h"

#include <cstdint>
#include <vector>

namespace keldra {

/// A click that is not wholly written yet, by its place on the click track.
struct PendingClick {
    std::int64_t startSample = 0;
    friend bool operator==(const PendingClick&, const PendingClick&) = default;
};

/// The sounds of clicks and how they are summed. One channel at 48 kHz.
struct ClickAudioChunkMixer {
    static constexpr int sampleRate = 48000;
    /// What a click's sound is multiplied by in a recording.
    static constexpr float volume = 0.5F;

    /// Two fading tones, 55 ms.
    static std::vector<float> softWaveform();
    /// The loudest moment of a sound, cut out from just before its onset, brought to full loudness and faded at both
    /// ends. Empty when there is nothing to hear.
    static std::vector<float> trimmed(const std::vector<float>& samples);
    /// The sound of a style; the soft one where the classic one cannot be read. Reads a file: not for the main thread.
    static std::vector<float> loadClickWaveform(ClickSoundStyle style);
    /// The sum of all clicks within the chunk that begins at `firstSample`. Clicks that end in it leave the list.
    static std::vector<float> mixChunk(std::int64_t firstSample, int length, std::vector<PendingClick>& clicks,
                                       const std::vector<float>& waveform);
};

} // namespace keldra
