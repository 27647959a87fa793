#include "recording/ClickTrack.h"

#include <algorithm>
#include <cmath>

namespace keldra {

std::int64_t ClickTrack::sampleAt(double hostSeconds) const {
    return std::llround((hostSeconds - m_start.seconds()) * ClickAudioChunkMixer::sampleRate);
}

void ClickTrack::enqueue(double hostSeconds) {
    if (m_start.isNumeric())
        m_pending.push_back({std::max(sampleAt(hostSeconds), m_nextSample)});
}

bool ClickTrack::writeUpTo(MediaTime time) {
    if (m_waveform.empty() || !m_start.isNumeric() || !time.isNumeric())
        return true;
    const std::int64_t target = sampleAt(time.seconds());
    while (m_nextSample < target && m_input.isReadyForMoreMediaData()) {
        const auto samples = ClickAudioChunkMixer::mixChunk(m_nextSample, chunkLength, m_pending, m_waveform);
        AudioBuffer chunk = AudioBuffer::allocate(format(), chunkLength,
                                                  m_start + MediaTime(m_nextSample, ClickAudioChunkMixer::sampleRate));
        std::copy(samples.begin(), samples.end(), chunk.mutableSamples<float>());
        if (!m_input.append(chunk))
            return false;
        m_nextSample += chunkLength;
    }
    return true;
}

} // namespace keldra
