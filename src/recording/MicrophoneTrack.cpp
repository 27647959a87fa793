#include "recording/MicrophoneTrack.h"

#include "base/Log.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

void log(const std::string& text) {
    logLine("[KELDRA Mic]", text);
}

std::string words(double seconds) {
    return std::to_string(seconds);
}

} // namespace

bool MicrophoneTrack::handle(const AudioBuffer& buffer, bool isHeard) {
    m_format = buffer.format();
    const MediaTime time = buffer.time();
    if (!m_input.isReadyForMoreMediaData()) {
        log("writer not ready, dropping an incoming buffer whole, at t=" + words(time.seconds()));
        return true;
    }
    if (m_nextExpected.isValid() && time > m_nextExpected) {
        log("gap detected: " + words((time - m_nextExpected).seconds()) +
            "s of missing audio ending at t=" + words(time.seconds()));
        if (!backfill(m_nextExpected, time))
            return false;
    }
    if (!m_input.isReadyForMoreMediaData()) {
        log("writer went not-ready right after the gap fill, dropping this buffer's real audio at t=" +
            words(time.seconds()));
        return true;
    }
    if (!m_input.append(isHeard ? buffer : AudioBuffer::allocate(buffer.format(), buffer.frameCount(), time)))
        return false;
    m_nextExpected = buffer.endTime();
    return true;
}

bool MicrophoneTrack::backfill(MediaTime from, MediaTime to) {
    if (!m_input.isReadyForMoreMediaData()) {
        log("writer not ready, could not backfill the gap ending at t=" + words(to.seconds()) +
            ", will retry on the next buffer or at finish");
        return true;
    }
    const auto frames = std::max(1LL, std::llround((to - from).seconds() * m_format->sampleRate));
    if (!m_input.append(AudioBuffer::allocate(*m_format, frames, from)))
        return false;
    m_nextExpected = to;
    return true;
}

bool MicrophoneTrack::finish(MediaTime lastPicture) {
    const bool isShort = m_nextExpected.isValid() && lastPicture.isValid() && lastPicture > m_nextExpected;
    return !isShort || !m_format || backfill(m_nextExpected, lastPicture);
}

} // namespace keldra
