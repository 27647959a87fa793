#include "media/TakeSound.h"

#include "media/PcmTrack.h"

#include <algorithm>
#include <cstring>

namespace keldra {
Result<TakeSound> TakeSound::addTo(TakeFile& file, const AudioFormat& format) {
    TRY_LET(const AVStream* const track, addPcmTrack(file.muxer(), format));
    return TakeSound(file, format, track->index);
}

Result<void> TakeSound::append(const AudioBuffer& buffer, std::int64_t firstFrame) {
    if (firstFrame > m_nextFrame)
        TRY(write(nullptr, firstFrame - m_nextFrame));
    const std::int64_t skipped = m_nextFrame - firstFrame;
    if (skipped >= buffer.frameCount())
        return {};
    return write(buffer.bytes() + skipped * m_format.bytesPerFrame(), buffer.frameCount() - skipped);
}

Result<void> TakeSound::write(const std::byte* bytes, std::int64_t frameCount) {
    const AVRational timeBase{1, m_format.sampleRate};
    const PacketPtr packet(av_packet_alloc());
    // In pieces of a second, so that a long silence takes no more memory than that.
    while (frameCount > 0) {
        const std::int64_t count = std::min<std::int64_t>(frameCount, m_format.sampleRate);
        const auto byteCount = std::size_t(count * m_format.bytesPerFrame());
        if (const int answer = av_new_packet(packet.get(), int(byteCount)); answer < 0)
            return fail(libavError(answer));
        if (bytes != nullptr) {
            std::memcpy(packet->data, bytes, byteCount);
            bytes += byteCount;
        } else {
            std::memset(packet->data, 0, byteCount);
        }
        packet->stream_index = m_trackIndex;
        packet->pts = packet->dts = m_nextFrame;
        packet->duration = count;
        packet->flags |= AV_PKT_FLAG_KEY;
        TRY(m_file->write(*packet, timeBase));
        av_packet_unref(packet.get());
        m_nextFrame += count;
        frameCount -= count;
    }
    return {};
}

} // namespace keldra
