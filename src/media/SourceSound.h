#pragma once

#include "base/Result.h"
#include "media/AudioTrackReader.h"

#include <cstdint>
#include <memory>

namespace keldra {

/// The sound of one track of a file as an endless row of samples: silence where the file has none. Opens the file when
/// it is first read. Reading on is cheap, anything else seeks. Belongs to one thread at a time.
class SourceSound {
public:
    SourceSound(AssetPtr asset, int trackIndex);

    const AssetPtr& asset() const { return m_asset; }
    int trackIndex() const { return m_trackIndex; }
    /// As the file states them.
    int sampleRate() const { return m_sampleRate; }
    int channelCount() const { return m_channelCount; }

    /// Writes `count` interleaved frames from sample `first` on, counted from the file's zero. What is not a finite
    /// number becomes silence.
    [[nodiscard]] Result<void> read(std::int64_t first, std::int64_t count, float* frames);

private:
    /// Makes m_held the first stretch that ends behind `sample`; empty when there is none.
    [[nodiscard]] Result<void> hold(std::int64_t sample);
    std::int64_t heldStart() const { return m_held.time().value(); }
    std::int64_t heldEnd() const { return heldStart() + m_held.frameCount(); }

    AssetPtr m_asset;
    int m_trackIndex;
    int m_sampleRate = 0;
    int m_channelCount = 0;
    std::unique_ptr<AudioTrackReader> m_reader;
    /// Its time counts in samples.
    AudioBuffer m_held;
    /// Everything from here to m_held's start is known to be silent.
    std::int64_t m_silentFrom = 0;
};

} // namespace keldra
