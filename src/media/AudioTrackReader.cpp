#include "media/AudioTrackReader.h"

#include "media/AudioDecoder.h"
#include "media/MediaError.h"
#include "media/MonoMix.h"

#include <array>
#include <string>

namespace keldra {
namespace {

AVSampleFormat sampleFormatOf(SampleKind kind) {
    return kind == SampleKind::int16 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLT;
}

/// Shares the frame's own memory.
AudioBuffer sharing(DecodedSound sound, const AudioFormat& format, MediaTime time) {
    const std::shared_ptr<AVFrame> frame(sound.frame.release(), LibavDelete());
    const auto* bytes = reinterpret_cast<const std::byte*>(frame->extended_data[0]);
    bytes += std::ptrdiff_t(sound.offset) * format.bytesPerFrame();
    return AudioBuffer::sharing(format, sound.frameCount, time, std::shared_ptr<const std::byte>(frame, bytes));
}

class DecodedTrackReader final : public AudioTrackReader {
public:
    DecodedTrackReader(std::unique_ptr<AudioDecoder> decoder, std::string fileName, Options options)
        : m_decoder(std::move(decoder))
        , m_fileName(std::move(fileName))
        , m_format{options.kind, m_decoder->sampleRate(), options.isMono ? 1 : m_decoder->channelCount()} {}

    const AudioFormat& format() const override { return m_format; }

    Result<void> seek(MediaTime time) override { return m_decoder->seek(firstSampleAt(time, m_format.sampleRate)); }

    Result<std::optional<AudioBuffer>> next() override {
        TRY_LET(std::optional<DecodedSound> sound, m_decoder->next());
        if (!sound)
            return std::optional<AudioBuffer>();
        const AVFrame& frame = *sound->frame;
        const MediaTime time(sound->position, m_format.sampleRate);
        const bool hasOurChannels = frame.ch_layout.nb_channels == m_format.channelCount;
        const bool isPacked = av_sample_fmt_is_planar(AVSampleFormat(frame.format)) == 0 || m_format.channelCount == 1;
        const AVSampleFormat packed = av_get_packed_sample_fmt(AVSampleFormat(frame.format));
        if (hasOurChannels && isPacked && packed == sampleFormatOf(m_format.kind))
            return std::optional(sharing(std::move(*sound), m_format, time));

        AudioBuffer buffer = AudioBuffer::allocate(m_format, sound->frameCount, time);
        if (m_format.channelCount == 1 && m_format.kind == SampleKind::int16 &&
            mixToMono(*sound, buffer.mutableSamples<std::int16_t>()))
            return std::optional(std::move(buffer));
        TRY(convert(*sound, buffer));
        return std::optional(std::move(buffer));
    }

private:
    /// Rate for rate, so nothing stays inside the converter.
    Result<void> convert(const DecodedSound& sound, AudioBuffer& buffer) {
        const AVFrame& frame = *sound.frame;
        if (!m_conversion) {
            TRY_LET(m_conversion, makeSoundConversion(soundEndOf(frame), soundEndOf(m_format), m_fileName));
        }
        const auto format = AVSampleFormat(frame.format);
        const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
        const int planes = isPlanar ? frame.ch_layout.nb_channels : 1;
        const int step = av_get_bytes_per_sample(format) * (isPlanar ? 1 : frame.ch_layout.nb_channels);
        std::array<const std::uint8_t*, 64> input{};
        for (int plane = 0; plane < planes && plane < int(input.size()); ++plane)
            input[std::size_t(plane)] = frame.extended_data[plane] + std::ptrdiff_t(sound.offset) * step;
        std::uint8_t* output = reinterpret_cast<std::uint8_t*>(buffer.mutableBytes());
        const int answer = swr_convert(m_conversion.get(), &output, sound.frameCount, input.data(), sound.frameCount);
        if (answer < 0)
            return fail(libavError(answer, m_fileName));
        return {};
    }

    std::unique_ptr<AudioDecoder> m_decoder;
    std::string m_fileName;
    AudioFormat m_format;
    SwrPtr m_conversion;
};

} // namespace

Result<std::unique_ptr<AudioTrackReader>> AudioTrackReader::open(AssetPtr asset, int trackIndex, Options options) {
    TRY_LET(auto decoder, AudioDecoder::open(asset->path(), trackIndex));
    return std::unique_ptr<AudioTrackReader>(
        new DecodedTrackReader(std::move(decoder), fileNameOf(asset->path()), options));
}

} // namespace keldra
