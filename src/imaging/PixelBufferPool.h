#pragma once

#include "imaging/PixelBuffer.h"

#include <memory>

namespace keldra {

/// Hands out buffers of one format and size and takes them back when their last handle goes. Any thread.
class PixelBufferPool {
public:
    /// At most `limit` buffers are out at once.
    PixelBufferPool(PixelFormat format, int width, int height, int limit);

    /// No picture when all buffers are out. Contents are whatever an earlier user left.
    PixelBuffer take();

    PixelFormat format() const;
    int width() const;
    int height() const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace keldra
