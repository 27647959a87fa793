#include "media/PictureConverter.h"

#include "base/Recycling.h"
#include "imaging/Convert.h"
#include "media/MediaError.h"

#include <cstdint>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace keldra {
namespace {

/// How a frame's numbers are meant, as far as libswscale tells them apart.
struct Colours {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    /// SWS_CS_...
    int matrix = SWS_CS_ITU709;
    bool isFullRange = false;
};

/// The formats called "J" are others with full range.
AVPixelFormat withoutRange(AVPixelFormat format) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
        return AV_PIX_FMT_YUV411P;
    default:
        return format;
    }
}

int matrixOf(const AVFrame& frame) {
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
        return SWS_CS_ITU709;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return SWS_CS_ITU601;
    case AVCOL_SPC_FCC:
        return SWS_CS_FCC;
    case AVCOL_SPC_SMPTE240M:
        return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return SWS_CS_BT2020;
    default:
        // Nothing said: what players take for granted, by the size.
        return frame.width >= 1280 || frame.height > 576 ? SWS_CS_ITU709 : SWS_CS_ITU601;
    }
}

Colours coloursOf(const AVFrame& frame) {
    const auto stated = AVPixelFormat(frame.format);
    const AVPixelFormat format = withoutRange(stated);
    return {format, matrixOf(frame), format != stated || frame.color_range == AVCOL_RANGE_JPEG};
}

bool isRgb(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description != nullptr && (description->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

bool hasFinerChroma(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    const bool isColoured = description != nullptr && description->nb_components >= 3;
    return isColoured && (isRgb(format) || description->log2_chroma_w < 1 || description->log2_chroma_h < 1);
}

bool mayBeTransparent(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description != nullptr && (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

/// The frame's own memory as a picture, kept alive by the picture.
PixelBuffer wrapFrame(FramePtr frame) {
    PixelBuffer::Planes planes;
    for (int plane = 0; plane < 3; ++plane)
        planes[std::size_t(plane)] = {frame->data[plane], frame->linesize[plane]};
    const int width = frame->width;
    const int height = frame->height;
    return PixelBuffer::wrap(
        PixelFormat::i420, width, height, planes,
        std::shared_ptr<AVFrame>(frame.release(), FramePtr::deleter_type(), Recycling<std::byte>()));
}

void makeOpaque(PixelBuffer& picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.mutableRow(0, y)[4 * x + 3] = 255;
}

} // namespace

void PictureConverter::FreeScaler::operator()(SwsContext* context) const {
    sws_freeContext(context);
}

PixelBuffer PictureConverter::newPicture() {
    // More than a reader, a window of frames and a compositor hold together; beyond that memory is the limit.
    constexpr int poolLimit = 24;
    if (!m_pool)
        m_pool = std::make_unique<PixelBufferPool>(m_format, m_width, m_height, poolLimit);
    PixelBuffer picture = m_pool->take();
    return picture ? picture : PixelBuffer::allocate(m_format, m_width, m_height);
}

Result<PixelBuffer> PictureConverter::convert(FramePtr frame, AVRational sampleAspectRatio) {
    if (m_width == 0) {
        const int width = squarePixelWidth(frame->width, sampleAspectRatio);
        if (std::int64_t(width) * frame->height > mostPicturePixels)
            return fail(mediaError(MediaError::noPicture, "The movie's picture is too large."));
        m_width = width;
        m_height = frame->height;
        m_format = hasFinerChroma(AVPixelFormat(frame->format)) ? PixelFormat::bgra : m_wanted;
    }
    const Colours colours = coloursOf(*frame);
    const bool isOurs = colours.format == AV_PIX_FMT_YUV420P && colours.matrix == SWS_CS_ITU709 &&
                        !colours.isFullRange && frame->width == m_width && frame->height == m_height;
    if (isOurs) {
        PixelBuffer wrapped = wrapFrame(std::move(frame));
        if (m_format == PixelFormat::i420)
            return wrapped;
        PixelBuffer picture = newPicture();
        convertI420ToBgra(wrapped, picture);
        return picture;
    }
    // libswscale keeps the matrix between two kinds of YUV only when both are the same; otherwise RGB lies between.
    const bool keepsNumbers = colours.matrix == SWS_CS_ITU709 && !colours.isFullRange && !isRgb(colours.format);
    PixelBuffer picture = newPicture();
    if (keepsNumbers || m_format == PixelFormat::bgra) {
        TRY(scale(*frame, picture));
        return picture;
    }
    if (!m_between)
        m_between = PixelBuffer::allocate(PixelFormat::bgra, m_width, m_height);
    TRY(scale(*frame, m_between));
    convertBgraToI420(m_between, picture);
    return picture;
}

Result<void> PictureConverter::scale(const AVFrame& frame, PixelBuffer& target) {
    const Colours colours = coloursOf(frame);
    const bool isSetUp = m_scaler && m_scalerWidth == frame.width && m_scalerHeight == frame.height &&
                         m_scalerFormat == colours.format && m_scalerMatrix == colours.matrix &&
                         m_isScalerFullRange == colours.isFullRange && m_scalerTarget == target.format();
    if (!isSetUp) {
        const AVPixelFormat wanted = target.format() == PixelFormat::bgra ? AV_PIX_FMT_BGRA : AV_PIX_FMT_YUV420P;
        constexpr int quality = SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
        m_scaler.reset(sws_getContext(frame.width, frame.height, colours.format, target.width(), target.height(),
                                      wanted, quality, nullptr, nullptr, nullptr));
        if (!m_scaler)
            return fail(libavError(AVERROR(ENOSYS), "A picture's format"));
        constexpr int one = 1 << 16;
        // RGB has no range to convert: the numbers stay. A format that takes no such details refuses them.
        sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(colours.matrix), colours.isFullRange ? 1 : 0,
                                 sws_getCoefficients(SWS_CS_ITU709), target.format() == PixelFormat::bgra ? 1 : 0, 0,
                                 one, one);
        m_scalerWidth = frame.width;
        m_scalerHeight = frame.height;
        m_scalerFormat = colours.format;
        m_scalerMatrix = colours.matrix;
        m_isScalerFullRange = colours.isFullRange;
        m_scalerTarget = target.format();
    }
    std::uint8_t* planes[4] = {};
    int strides[4] = {};
    for (int plane = 0; plane < PixelBuffer::planeCount(target.format()); ++plane) {
        planes[plane] = target.mutableData(plane);
        strides[plane] = int(target.strideBytes(plane));
    }
    const int rows = sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides);
    if (rows < 0)
        return fail(libavError(rows, "A picture's format"));
    if (target.format() == PixelFormat::bgra && mayBeTransparent(colours.format))
        makeOpaque(target);
    return {};
}

} // namespace keldra
