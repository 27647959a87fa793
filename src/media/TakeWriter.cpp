#include "media/TakeWriter.h"

#include "imaging/Convert.h"
#include "media/MediaError.h"
#include "media/PresetTrial.h"

#include <algorithm>

namespace keldra {
H264Settings liveEncoderSettings(const VideoTrackSettings& settings) {
    H264Settings encoder;
    encoder.width = settings.width;
    encoder.height = settings.height;
    encoder.timeBase = {1, TakeWriter::timescale};
    encoder.frameRate = {std::max(1, settings.expectedFrameRate), 1};
    encoder.averageBitRate = settings.averageBitRate;
    encoder.preset = untriedPreset();
    encoder.isLive = true;
    encoder.maximumKeyFrameInterval = settings.maximumKeyFrameInterval;
    return encoder;
}

Result<std::unique_ptr<TakeWriter>> TakeWriter::create(const std::string& path, TakeKeeper::Listener listener) {
    TRY_LET(auto file, TakeFile::create(path, std::move(listener)));
    return std::unique_ptr<TakeWriter>(new TakeWriter(std::move(file)));
}

Result<void> TakeWriter::addVideo(const VideoTrackSettings& settings, const std::optional<std::string>& preset) {
    H264Settings encoder = liveEncoderSettings(settings);
    if (preset)
        encoder.preset = *preset;
    TRY_LET(m_video.encoder, H264Encoder::open(encoder));
    TRY_LET(const AVStream* const track, m_video.encoder->addTrackTo(m_file->muxer()));
    m_video.index = track->index;
    m_file->muxer().setTag(frameRateTag, std::to_string(settings.expectedFrameRate));
    m_video.converted = PixelBuffer::allocate(PixelFormat::i420, settings.width, settings.height);
    return {};
}

Result<void> TakeWriter::addSound(const AudioFormat& format) {
    TRY_LET(TakeSound sound, TakeSound::addTo(*m_file, format));
    m_sounds.push_back(sound);
    return {};
}

Result<void> TakeWriter::begin() {
    return m_file->begin();
}

Result<void> TakeWriter::appendPicture(const PixelBuffer& picture, std::int64_t stamp) {
    stamp = std::max(stamp, m_video.lastStamp + 1);
    const bool asKeyFrame = !m_video.hasPicture() || stamp - m_video.lastKeyStamp >= timescale;
    if (asKeyFrame)
        m_video.lastKeyStamp = stamp;
    m_video.lastStamp = stamp;

    // The timer sees to fragments in real time; this, to what is appended faster than that.
    if (stamp - m_fragmentStart >= timescale) {
        TRY(m_file->closeFragment());
        m_fragmentStart = stamp;
    }
    convertBgraToI420(picture, m_video.converted);
    return m_video.encoder->encode(m_video.converted, stamp, asKeyFrame,
                                   [this](AVPacket& packet) { return write(packet); });
}

Result<void> TakeWriter::appendSound(int number, const AudioBuffer& sound, std::int64_t firstFrame) {
    return m_sounds[std::size_t(number)].append(sound, firstFrame);
}

Result<void> TakeWriter::write(AVPacket& packet) {
    packet.stream_index = m_video.index;
    // How long it is shown nobody knows yet. A guess that proves too long would push the next fragment's first picture
    // back; a tick never is.
    packet.duration = 1;
    return m_file->write(packet, m_video.encoder->timeBase());
}

Result<void> TakeWriter::finish(MediaTime end) {
    if (!m_video.hasPicture()) {
        m_file->discard();
        return fail(mediaError(MediaError::noPicture, "Not one picture was recorded."));
    }
    TRY(m_video.encoder->drain([this](AVPacket& packet) { return write(packet); }));
    return m_file->finish(end);
}

std::string TakeWriter::giveUp(const std::string& recoveryFolder) {
    if (m_video.hasPicture())
        return m_file->giveUp(recoveryFolder);
    m_file->discard();
    return {};
}

} // namespace keldra
