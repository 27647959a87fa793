#include "media/SourceSound.h"

#include "media/MediaError.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Far beyond full scale, and far from what sums overflow.
constexpr float loudest = 1e6F;

void copyAudible(const float* from, float* to, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = std::abs(from[i]) <= loudest ? from[i] : 0;
}

} // namespace

SourceSound::SourceSound(AssetPtr asset, int trackIndex) : m_asset(std::move(asset)), m_trackIndex(trackIndex) {
    for (const AssetTrack& track : m_asset->tracks())
        if (track.index == trackIndex) {
            m_sampleRate = track.sampleRate;
            m_channelCount = track.channelCount;
        }
}

Result<void> SourceSound::read(std::int64_t first, std::int64_t count, float* frames) {
    const std::int64_t end = first + count;
    std::fill_n(frames, count * m_channelCount, 0.0F);
    for (std::int64_t at = std::max<std::int64_t>(0, first); at < end;) {
        TRY(hold(at));
        if (!m_held || heldStart() >= end)
            return {};
        at = std::max(at, heldStart());
        const std::int64_t taken = std::min(end, heldEnd()) - at;
        copyAudible(m_held.samples<float>() + (at - heldStart()) * m_channelCount,
                    frames + (at - first) * m_channelCount, taken * m_channelCount);
        at += taken;
    }
    return {};
}

Result<void> SourceSound::hold(std::int64_t sample) {
    if (!m_reader) {
        TRY_LET(m_reader, AudioTrackReader::open(m_asset, m_trackIndex, {}));
        if (m_reader->format().sampleRate != m_sampleRate || m_reader->format().channelCount != m_channelCount)
            return fail(mediaError(MediaError::noSuchTrack,
                                   fileNameOf(m_asset->path()) + " is no longer the file that was opened"));
        m_silentFrom = 0;
    }
    const bool isKnown = sample >= m_silentFrom && (!m_held || sample < heldEnd());
    const bool isAtEnd = sample >= m_silentFrom && !m_held && m_silentFrom > 0;
    if ((isKnown && m_held) || isAtEnd)
        return {};
    // Reading on is no seek, and the reader itself knows what lies near enough to be read up to.
    const bool isNext = m_held ? sample == heldEnd() : sample == 0 && m_silentFrom == 0;
    if (!isNext)
        TRY(m_reader->seek(MediaTime(sample, m_sampleRate)));
    TRY_LET(std::optional<AudioBuffer> next, m_reader->next());
    m_silentFrom = sample;
    m_held = next ? std::move(*next) : AudioBuffer();
    return {};
}

} // namespace keldra
