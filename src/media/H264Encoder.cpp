#include "media/H264Encoder.h"

#include "media/MediaError.h"

#include <cassert>
#include <cerrno>
#include <cstring>

extern "C" {
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
}

namespace keldra {
namespace {

constexpr const char* encoderName = "H.264 encoder";

void keepNothing(void*, std::uint8_t*) {}

const char* codecNameOf(H264Implementation implementation) {
    switch (implementation) {
    case H264Implementation::x264:
        return "libx264";
    case H264Implementation::vaapi:
        return "h264_vaapi";
    case H264Implementation::nvenc:
        return "h264_nvenc";
    case H264Implementation::qsv:
        return "h264_qsv";
    }
    return "";
}

AVPixelFormat pixelFormatOf(H264Implementation implementation) {
    switch (implementation) {
    case H264Implementation::vaapi:
        return AV_PIX_FMT_VAAPI;
    case H264Implementation::qsv:
        return AV_PIX_FMT_NV12;
    default:
        return AV_PIX_FMT_YUV420P;
    }
}

/// Frames in the graphics processor's memory, from whatever VA-API device is there.
int giveDeviceFrames(AVCodecContext& context) {
    struct Unref {
        AVBufferRef* reference = nullptr;
        ~Unref() { av_buffer_unref(&reference); }
    };
    Unref device;
    if (const int answer = av_hwdevice_ctx_create(&device.reference, AV_HWDEVICE_TYPE_VAAPI, nullptr, nullptr, 0);
        answer < 0)
        return answer;
    Unref frames{av_hwframe_ctx_alloc(device.reference)};
    if (frames.reference == nullptr)
        return AVERROR(ENOMEM);
    auto* details = reinterpret_cast<AVHWFramesContext*>(frames.reference->data);
    details->format = AV_PIX_FMT_VAAPI;
    details->sw_format = AV_PIX_FMT_NV12;
    details->width = context.width;
    details->height = context.height;
    details->initial_pool_size = 20;
    if (const int answer = av_hwframe_ctx_init(frames.reference); answer < 0)
        return answer;
    context.hw_frames_ctx = av_buffer_ref(frames.reference);
    return context.hw_frames_ctx != nullptr ? 0 : AVERROR(ENOMEM);
}

/// Freed at the end of the call that opens the codec.
class Options {
public:
    ~Options() { av_dict_free(&m_options); }
    void set(const char* key, const std::string& value) { av_dict_set(&m_options, key, value.c_str(), 0); }
    AVDictionary** get() { return &m_options; }

private:
    AVDictionary* m_options = nullptr;
};

void setX264Options(const H264Settings& settings, std::optional<BitBudget> budget, Options& options) {
    options.set("preset", settings.preset);
    // A key frame that is asked for is one that a reader may start from.
    options.set("forced-idr", "1");
    // Looking ahead keeps many pictures; of the largest ones, those would be gigabytes.
    constexpr std::int64_t largePicture = std::int64_t(1) << 25;
    if (std::int64_t(settings.width) * settings.height > largePicture)
        options.set("x264-params", "rc-lookahead=3:sync-lookahead=0:bframes=1");
    if (settings.isLive)
        options.set("tune", "zerolatency");
    if (budget)
        options.set("crf", std::to_string(budget->rateFactorAt(0)));
    if (settings.constantRateFactor)
        options.set("crf", std::to_string(*settings.constantRateFactor));
}

/// Quality as each of them counts it.
void setDeviceOptions(const H264Settings& settings, AVCodecContext& context, Options& options) {
    const int quality = settings.constantRateFactor.value_or(0);
    if (quality == 0)
        return;
    if (settings.implementation == H264Implementation::nvenc) {
        options.set("rc", "vbr");
        options.set("cq", std::to_string(quality));
        context.bit_rate = 0;
    } else if (settings.implementation == H264Implementation::vaapi) {
        options.set("rc_mode", "CQP");
        options.set("qp", std::to_string(quality));
    } else {
        context.global_quality = quality;
    }
}

} // namespace

Result<std::unique_ptr<H264Encoder>> H264Encoder::open(const H264Settings& settings) {
    quietLibav();
    const AVCodec* codec = avcodec_find_encoder_by_name(codecNameOf(settings.implementation));
    if (codec == nullptr)
        return fail(mediaError(MediaError::noEncoder, "There is no such H.264 encoder on this system."));
    CodecContextPtr context(avcodec_alloc_context3(codec));
    context->width = settings.width;
    context->height = settings.height;
    context->pix_fmt = pixelFormatOf(settings.implementation);
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
    // libx264's own average counts pictures, and starves a screen that seldom changes.
    std::optional<BitBudget> budget;
    if (settings.averageBitRate && settings.isLive && settings.implementation == H264Implementation::x264)
        budget.emplace(*settings.averageBitRate);
    else if (settings.averageBitRate)
        context->bit_rate = *settings.averageBitRate;

    Options options;
    if (settings.implementation == H264Implementation::x264)
        setX264Options(settings, budget, options);
    else
        setDeviceOptions(settings, *context, options);
    int answer = context->pix_fmt == AV_PIX_FMT_VAAPI ? giveDeviceFrames(*context) : 0;
    if (answer >= 0)
        answer = avcodec_open2(context.get(), codec, options.get());
    if (answer < 0)
        return fail(libavError(answer, encoderName));
    return std::unique_ptr<H264Encoder>(new H264Encoder(std::move(context), budget));
}

H264Encoder::H264Encoder(CodecContextPtr codec, std::optional<BitBudget> budget)
    : m_codec(std::move(codec)), m_budget(budget), m_frame(av_frame_alloc()), m_packet(av_packet_alloc()) {}

Result<AVStream*> H264Encoder::addTrackTo(MovieMuxer& muxer) const {
    TRY_LET(AVStream* const stream, muxer.addTrack(m_codec->time_base));
    if (const int answer = avcodec_parameters_from_context(stream->codecpar, m_codec.get()); answer < 0)
        return fail(libavError(answer, encoderName));
    stream->sample_aspect_ratio = m_codec->sample_aspect_ratio;
    stream->avg_frame_rate = m_codec->framerate;
    return stream;
}

Result<void> H264Encoder::encode(const PixelBuffer& picture, std::int64_t stamp, bool asKeyFrame,
                                 const PacketSink& sink) {
    assert(picture.format() == PixelFormat::i420);
    assert(picture.width() == m_codec->width && picture.height() == m_codec->height);
    av_frame_unref(m_frame.get());
    if (m_codec->pix_fmt == AV_PIX_FMT_YUV420P)
        wrapPicture(picture);
    else
        TRY(convertFrame(picture));
    // libavcodec takes it on from here.
    if (m_budget) {
        const double factor = m_budget->rateFactorAt(double(stamp) * av_q2d(m_codec->time_base));
        if (const int answer = av_opt_set_double(m_codec->priv_data, "crf", factor, 0); answer < 0)
            return fail(libavError(answer, encoderName));
    }
    m_frame->pts = stamp;
    m_frame->pict_type = asKeyFrame ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    m_frame->color_range = m_codec->color_range;
    m_frame->colorspace = m_codec->colorspace;
    if (const int answer = avcodec_send_frame(m_codec.get(), m_frame.get()); answer < 0)
        return fail(libavError(answer, encoderName));
    return receive(sink);
}

void H264Encoder::wrapPicture(const PixelBuffer& picture) {
    m_frame->format = m_codec->pix_fmt;
    m_frame->width = picture.width();
    m_frame->height = picture.height();
    for (int plane = 0; plane < 3; ++plane) {
        auto* data = const_cast<std::uint8_t*>(picture.data(plane));
        m_frame->data[plane] = data;
        m_frame->linesize[plane] = int(picture.strideBytes(plane));
        // Without an owner libavcodec would copy the picture; x264 makes its own copy before the call returns.
        const std::size_t bytes = std::size_t(picture.strideBytes(plane)) * std::size_t(picture.planeHeight(plane));
        m_frame->buf[plane] = av_buffer_create(data, bytes, keepNothing, nullptr, AV_BUFFER_FLAG_READONLY);
    }
}

Result<void> H264Encoder::convertFrame(const PixelBuffer& picture) {
    // A codec may still read the last one.
    m_paired.reset(av_frame_alloc());
    m_paired->format = AV_PIX_FMT_NV12;
    m_paired->width = picture.width();
    m_paired->height = picture.height();
    if (const int answer = av_frame_get_buffer(m_paired.get(), 0); answer < 0)
        return fail(libavError(answer, encoderName));
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(m_paired->data[0] + std::ptrdiff_t(y) * m_paired->linesize[0], picture.row(0, y),
                    std::size_t(picture.width()));
    for (int y = 0; y < picture.planeHeight(1); ++y) {
        std::uint8_t* row = m_paired->data[1] + std::ptrdiff_t(y) * m_paired->linesize[1];
        for (int x = 0; x < picture.planeWidth(1); ++x) {
            row[2 * x] = picture.row(1, y)[x];
            row[2 * x + 1] = picture.row(2, y)[x];
        }
    }
    int answer = 0;
    if (m_codec->hw_frames_ctx == nullptr) {
        answer = av_frame_ref(m_frame.get(), m_paired.get());
    } else {
        answer = av_hwframe_get_buffer(m_codec->hw_frames_ctx, m_frame.get(), 0);
        if (answer >= 0)
            answer = av_hwframe_transfer_data(m_frame.get(), m_paired.get(), 0);
    }
    if (answer < 0)
        return fail(libavError(answer, encoderName));
    return {};
}

Result<void> H264Encoder::drain(const PacketSink& sink) {
    if (const int answer = avcodec_send_frame(m_codec.get(), nullptr); answer < 0 && answer != AVERROR_EOF)
        return fail(libavError(answer, encoderName));
    return receive(sink);
}

Result<void> H264Encoder::receive(const PacketSink& sink) {
    for (;;) {
        const int answer = avcodec_receive_packet(m_codec.get(), m_packet.get());
        if (answer == AVERROR(EAGAIN) || answer == AVERROR_EOF)
            return {};
        if (answer < 0)
            return fail(libavError(answer, encoderName));
        if (m_budget)
            m_budget->spend(std::int64_t(m_packet->size) * 8);
        Result<void> taken = sink(*m_packet);
        av_packet_unref(m_packet.get());
        TRY(taken);
    }
}

} // namespace keldra
