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

Result<std::unique_ptr<ExportFile>> ExportFile::create(const std::string& path, int width, int height,
                                                       MediaTime frameDuration) {
    std::unique_ptr<ExportFile> file(new ExportFile);
    TRY_LET(file->m_file, OutputFile::create(path, OutputFile::Access::rewritable));
    if (Result<void> opened = file->open(width, height, frameDuration); !opened) {
        file->remove();
        return fail(std::move(opened.error()));
    }
    return file;
}

Result<void> ExportFile::open(int width, int height, MediaTime frameDuration) {
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    if (width < 2 || height < 2 || !frameDuration.isNumeric() || frameDuration <= MediaTime::zero() ||
        frameDuration.value() > longest)
        return fail(mediaError(MediaError::invalidSettings, "The size or the frame rate of the export is invalid."));
    m_width = width & ~1;
    m_height = height & ~1;
    m_converted = PixelBuffer::allocate(PixelFormat::i420, m_width, m_height);
    const AVRational step{int(frameDuration.value()), frameDuration.timescale()};
    TRY_LET(m_encoder, H264Encoder::open(encoderSettings(m_width, m_height, step)));
    TRY_LET(m_muxer, MovieMuxer::open(*m_file, MovieMuxer::Shape::mp4));
    TRY(m_encoder->addTrackTo(*m_muxer));
    return m_muxer->begin();
}

H264Encoder::PacketSink ExportFile::packetSink() {
    return [this](AVPacket& packet) {
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

Result<void> ExportFile::finish() {
    TRY(m_encoder->drain(packetSink()));
    return m_muxer->finish();
}

} // namespace keldra
