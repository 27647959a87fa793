#pragma once

#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "imaging/PixelBufferPool.h"
#include "media/CompositionReader.h"
#include "media/VideoComposition.h"

#include <memory>

namespace keldra {

/// Composes single frames of a composition, one at a time. Belongs to one thread at a time, which waits for the
/// compositor.
class FrameGenerator {
public:
    FrameGenerator(std::shared_ptr<const Composition> composition, VideoComposition videoComposition);

    /// The frame on screen at `time`, BGRA. Errors: a time outside the composition, and whatever reading or composing
    /// meets.
    [[nodiscard]] Result<PixelBuffer> frameAt(MediaTime time);

private:
    VideoComposition m_videoComposition;
    CompositionReader m_reader;
    std::shared_ptr<PixelBufferPool> m_pool;
    std::unique_ptr<FrameCompositor> m_compositor;
};

} // namespace keldra
