#include "media/ExportFile.h"

#include "imaging/Convert.h"
#include "media/MediaError.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace keldra {
namespace {

H264Settings encoderSettings(int width, int height, AVRational frameDuration) {
    H264Settings settings;
    settings.width = width;
    settings.height = height;
    settings.timeBase = frameDuration;
    settings.frameRate = av_inv_q(frameDuration);
    settings.constantRateFactor = 18;
    settings.preset = "veryfast";
    // A second of frames.
    settings.maximumKeyFrameInterval = std::max(1, int(std::lround(av_q2d(settings.frameRate))));
    return settings;
}

} // namespace

Result<std::unique_ptr<ExportFile>> ExportFile::create(const std::string& path, const std::optional<Picture>& picture,
                                                       SoundEncoding* sound) {
    std::unique_ptr<ExportFile> file(new ExportFile);
    file->m_sound = sound;
    TRY_LET(file->m_file, OutputFile::create(path, OutputFile::Access::rewritable));
    if (Result<void> opened = file->open(picture); !opened) {
        file->remove();
        return fail(std::move(opened.error()));
    }
    return file;
}

Result<void> ExportFile::open(const std::optional<Picture>& picture) {
    TRY_LET(m_muxer, MovieMuxer::open(*m_file, MovieMuxer::Shape::mp4));
    if (picture)
        TRY(openPicture(*picture));
    if (m_sound != nullptr) {
        TRY_LET(AVStream* const track, m_sound->addTrackTo(*m_muxer));
        m_soundTrack = track->index;
    }
    return m_muxer->begin();
}

Result<void> ExportFile::openPicture(const Picture& picture) {
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    const MediaTime frameDuration = picture.frameDuration;
    if (picture.width < 2 || picture.height < 2 || !frameDuration.isNumeric() || frameDuration <= MediaTime::zero() ||
        frameDuration.value() > longest)
        return fail(mediaError(MediaError::invalidSettings, "The size or the frame rate of the export is invalid."));
    m_width = picture.width & ~1;
    m_height = picture.height & ~1;
    m_converted = PixelBuffer::allocate(PixelFormat::i420, m_width, m_height);
    const AVRational step{int(frameDuration.value()), frameDuration.timescale()};
    TRY_LET(m_encoder, H264Encoder::open(withProvenEncoder(picture.encoder, encoderSettings(m_width, m_height, step))));
    TRY(m_encoder->addTrackTo(*m_muxer));
    return {};
}

H264Encoder::PacketSink ExportFile::packetSink() {
    return [this](AVPacket& packet) -> Result<void> {
        TRY(writeSoundBefore(packet.dts, m_encoder->timeBase()));
        packet.stream_index = 0;
        // One frame long: libx264 does not say it of every packet, and the last one's length counts.
        packet.duration = 1;
        return m_muxer->write(packet, m_encoder->timeBase());
    };
}

Result<void> ExportFile::append(const PixelBuffer& picture) {
    if (picture.width() < m_width || picture.height() < m_height)
        return fail(mediaError(MediaError::invalidSettings, "A composed frame has another size than the export."));
    const PixelBuffer even = picture.cropped({0, 0, m_width, m_height});
    if (even.format() == PixelFormat::i420) {
        m_last = even;
    } else {
        convertBgraToI420(even, m_converted);
        m_last = m_converted;
    }
    return appendAgain();
}

Result<void> ExportFile::appendAgain() {
    return m_encoder->encode(m_last, m_frameCount++, false, packetSink());
}

Result<void> ExportFile::writeSoundBefore(std::int64_t ticks, AVRational timeBase) {
    while (m_sound != nullptr && !m_isSoundAtEnd) {
        if (!m_soundPacket)
            m_soundPacket = m_sound->take();
        if (m_soundPacket && av_compare_ts(m_soundPacket->dts, m_sound->timeBase(), ticks, timeBase) >= 0)
            return {};
        TRY(appendSound());
    }
    return {};
}

Result<MediaTime> ExportFile::appendSound() {
    PacketPtr packet = m_soundPacket ? std::move(m_soundPacket) : m_sound->take();
    if (!packet) {
        m_isSoundAtEnd = true;
        return MediaTime::invalid();
    }
    const MediaTime end = timeOf(packet->pts + packet->duration, m_sound->timeBase());
    packet->stream_index = m_soundTrack;
    TRY(m_muxer->write(*packet, m_sound->timeBase()));
    return end;
}

Result<void> ExportFile::finish() {
    if (m_encoder)
        TRY(m_encoder->drain(packetSink()));
    while (m_sound != nullptr && !m_isSoundAtEnd)
        TRY(appendSound());
    return m_muxer->finish();
}

} // namespace keldra
