#pragma once

#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "imaging/PixelBufferPool.h"
#include "media/Libav.h"

#include <memory>

struct SwsContext;

namespace keldra {

/// Turns decoded frames into our pictures: square pixels, BT.709 limited, the size of the first frame.
/// An ordinary 4:2:0 frame is not copied; others go through libswscale. Belongs to one thread at a time.
class PictureConverter {
public:
    /// Asked for 4:2:0 it gives BGRA where chroma is finer than that.
    explicit PictureConverter(PixelFormat format) : m_wanted(format) {}

    /// `sampleAspectRatio` is the width of a pixel over its height.
    [[nodiscard]] Result<PixelBuffer> convert(FramePtr frame, AVRational sampleAspectRatio);

private:
    struct FreeScaler {
        void operator()(SwsContext* context) const;
    };

    PixelBuffer newPicture();
    [[nodiscard]] Result<void> scale(const AVFrame& frame, PixelBuffer& target);

    PixelFormat m_wanted;
    /// What the movie's pictures come as.
    PixelFormat m_format = PixelFormat::bgra;
    int m_width = 0;
    int m_height = 0;
    std::unique_ptr<PixelBufferPool> m_pool;
    /// In red, green and blue, on its way to 4:2:0.
    PixelBuffer m_between;
    std::unique_ptr<SwsContext, FreeScaler> m_scaler;
    // What the scaler was set up for.
    int m_scalerWidth = 0;
    int m_scalerHeight = 0;
    int m_scalerFormat = AV_PIX_FMT_NONE;
    int m_scalerMatrix = 0;
    bool m_isScalerFullRange = false;
    PixelFormat m_scalerTarget = PixelFormat::bgra;
};

} // namespace keldra
