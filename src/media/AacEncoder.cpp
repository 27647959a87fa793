#include "media/AacEncoder.h"

#include "media/MediaError.h"

#include <algorithm>
#include <cassert>

namespace keldra {

Result<std::unique_ptr<AacEncoder>> AacEncoder::open(int sampleRate, int channelCount, std::int64_t bitRate) {
    quietLibav();
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (codec == nullptr)
        return fail(mediaError(MediaError::noEncoder, "There is no AAC encoder on this system."));
    CodecContextPtr context(avcodec_alloc_context3(codec));
    context->sample_fmt = AV_SAMPLE_FMT_FLTP;
    context->sample_rate = sampleRate;
    context->time_base = {1, sampleRate};
    context->bit_rate = bitRate;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&context->ch_layout, channelCount);
    if (const int answer = avcodec_open2(context.get(), codec, nullptr); answer < 0)
        return fail(libavError(answer, "AAC encoder"));
    return std::unique_ptr<AacEncoder>(new AacEncoder(std::move(context)));
}

AacEncoder::AacEncoder(CodecContextPtr codec) : m_codec(std::move(codec)) {}

Result<AVStream*> AacEncoder::addTrackTo(MovieMuxer& muxer) const {
    TRY_LET(AVStream* const stream, muxer.addTrack(m_codec->time_base));
    if (const int answer = avcodec_parameters_from_context(stream->codecpar, m_codec.get()); answer < 0)
        return fail(libavError(answer, "AAC encoder"));
    return stream;
}

Result<void> AacEncoder::encode(const AudioBuffer& sound, const PacketSink& sink) {
    const int channels = m_codec->ch_layout.nb_channels;
    assert(sound.format().channelCount == channels && sound.frameCount() <= frameSize());
    // The encoder keeps some frames for later, so each has memory of its own.
    const FramePtr frame(av_frame_alloc());
    frame->format = m_codec->sample_fmt;
    frame->sample_rate = m_codec->sample_rate;
    frame->ch_layout = m_codec->ch_layout;
    frame->nb_samples = int(sound.frameCount());
    frame->pts = m_position;
    if (const int answer = av_frame_get_buffer(frame.get(), 0); answer < 0)
        return fail(libavError(answer, "AAC encoder"));
    const auto* samples = sound.samples<float>();
    for (int channel = 0; channel < channels; ++channel) {
        auto* plane = reinterpret_cast<float*>(frame->extended_data[channel]);
        for (int i = 0; i < frame->nb_samples; ++i)
            plane[i] = std::clamp(samples[i * channels + channel], -1.0F, 1.0F);
    }
    m_position += frame->nb_samples;
    if (const int answer = avcodec_send_frame(m_codec.get(), frame.get()); answer < 0)
        return fail(libavError(answer, "AAC encoder"));
    return receive(sink);
}

Result<void> AacEncoder::drain(const PacketSink& sink) {
    if (const int answer = avcodec_send_frame(m_codec.get(), nullptr); answer < 0 && answer != AVERROR_EOF)
        return fail(libavError(answer, "AAC encoder"));
    return receive(sink);
}

Result<void> AacEncoder::receive(const PacketSink& sink) {
    for (;;) {
        PacketPtr packet(av_packet_alloc());
        const int answer = avcodec_receive_packet(m_codec.get(), packet.get());
        if (answer == AVERROR(EAGAIN) || answer == AVERROR_EOF)
            return {};
        if (answer < 0)
            return fail(libavError(answer, "AAC encoder"));
        // The last packet of a file ends where the sound ends.
        packet->duration = std::min<std::int64_t>(packet->duration, m_position - packet->pts);
        if (packet->duration > 0)
            TRY(sink(std::move(packet)));
    }
}

} // namespace keldra
