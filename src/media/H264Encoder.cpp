#include "media/H264Encoder.h"

#include "media/MediaError.h"

#include <cassert>

extern "C" {
#include <libavutil/opt.h>
}

namespace keldra {
namespace {

void keepNothing(void*, std::uint8_t*) {}

} // namespace

Result<std::unique_ptr<H264Encoder>> H264Encoder::open(const H264Settings& settings) {
    quietLibav();
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (codec == nullptr)
        return fail(mediaError(MediaError::noEncoder, "There is no H.264 encoder on this system."));
    CodecContextPtr context(avcodec_alloc_context3(codec));
    context->width = settings.width;
    context->height = settings.height;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->time_base = settings.timeBase;
    context->framerate = settings.frameRate;
    context->gop_size = settings.maximumKeyFrameInterval;
    context->thread_count = settings.threadCount;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->sample_aspect_ratio = {1, 1};
    context->color_range = AVCOL_RANGE_MPEG;
    context->colorspace = AVCOL_SPC_BT709;
    context->color_primaries = AVCOL_PRI_BT709;
    context->color_trc = AVCOL_TRC_BT709;
    context->chroma_sample_location = AVCHROMA_LOC_CENTER;

    AVDictionary* options = nullptr;
    av_dict_set(&options, "preset", settings.preset.c_str(), 0);
    // A key frame that is asked for is one that a reader may start from.
    av_dict_set(&options, "forced-idr", "1", 0);
    // Looking ahead keeps many pictures; of the largest ones, those would be gigabytes.
    constexpr std::int64_t largePicture = std::int64_t(1) << 25;
    if (std::int64_t(settings.width) * settings.height > largePicture)
        av_dict_set(&options, "x264-params", "rc-lookahead=3:sync-lookahead=0:bframes=1", 0);
    if (settings.isLive)
        av_dict_set(&options, "tune", "zerolatency", 0);
    if (settings.averageBitRate)
        context->bit_rate = *settings.averageBitRate;
    if (settings.constantRateFactor)
        av_dict_set_int(&options, "crf", *settings.constantRateFactor, 0);
    const int answer = avcodec_open2(context.get(), codec, &options);
    av_dict_free(&options);
    if (answer < 0)
        return fail(libavError(answer, "H.264 encoder"));
    return std::unique_ptr<H264Encoder>(new H264Encoder(std::move(context)));
}

H264Encoder::H264Encoder(CodecContextPtr codec)
    : m_codec(std::move(codec)), m_frame(av_frame_alloc()), m_packet(av_packet_alloc()) {}

Result<AVStream*> H264Encoder::addTrackTo(MovieMuxer& muxer) const {
    TRY_LET(AVStream* const stream, muxer.addTrack(m_codec->time_base));
    if (const int answer = avcodec_parameters_from_context(stream->codecpar, m_codec.get()); answer < 0)
        return fail(libavError(answer, "H.264 encoder"));
    stream->sample_aspect_ratio = m_codec->sample_aspect_ratio;
    stream->avg_frame_rate = m_codec->framerate;
    return stream;
}

Result<void> H264Encoder::encode(const PixelBuffer& picture, std::int64_t stamp, bool asKeyFrame,
                                 const PacketSink& sink) {
    assert(picture.format() == PixelFormat::i420);
    assert(picture.width() == m_codec->width && picture.height() == m_codec->height);
    av_frame_unref(m_frame.get());
    m_frame->format = m_codec->pix_fmt;
    m_frame->width = picture.width();
    m_frame->height = picture.height();
    m_frame->pts = stamp;
    m_frame->pict_type = asKeyFrame ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    m_frame->color_range = m_codec->color_range;
    m_frame->colorspace = m_codec->colorspace;
    for (int plane = 0; plane < 3; ++plane) {
        auto* data = const_cast<std::uint8_t*>(picture.data(plane));
        m_frame->data[plane] = data;
        m_frame->linesize[plane] = int(picture.strideBytes(plane));
        // Without an owner libavcodec would copy the picture; x264 makes its own copy before the call returns.
        const std::size_t bytes = std::size_t(picture.strideBytes(plane)) * std::size_t(picture.planeHeight(plane));
        m_frame->buf[plane] = av_buffer_create(data, bytes, keepNothing, nullptr, AV_BUFFER_FLAG_READONLY);
    }
    if (const int answer = avcodec_send_frame(m_codec.get(), m_frame.get()); answer < 0)
        return fail(libavError(answer, "H.264 encoder"));
    return receive(sink);
}

Result<void> H264Encoder::drain(const PacketSink& sink) {
    if (const int answer = avcodec_send_frame(m_codec.get(), nullptr); answer < 0 && answer != AVERROR_EOF)
        return fail(libavError(answer, "H.264 encoder"));
    return receive(sink);
}

Result<void> H264Encoder::receive(const PacketSink& sink) {
    for (;;) {
        const int answer = avcodec_receive_packet(m_codec.get(), m_packet.get());
        if (answer == AVERROR(EAGAIN) || answer == AVERROR_EOF)
            return {};
        if (answer < 0)
            return fail(libavError(answer, "H.264 encoder"));
        Result<void> taken = sink(*m_packet);
        av_packet_unref(m_packet.get());
        TRY(taken);
    }
}

} // namespace keldra
