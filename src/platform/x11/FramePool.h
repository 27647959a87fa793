#pragma once

#include "imaging/PixelBuffer.h"
#include "platform/x11/WakeUp.h"
#include "platform/x11/X11Connection.h"

#include <memory>
#include <xcb/render.h>

namespace keldra {

/// A frame to be painted: the server paints into `picture`, and after FramePool::finish() `pixels` holds the result,
/// in memory that both share.
struct PooledFrame {
    PixelBuffer pixels;
    xcb_render_picture_t picture = 0;
    std::uint32_t segment = 0;
};

/// BGRA frames of one size in memory shared with the X server. Frames that are out outlive the pool; the pool belongs
/// to one thread, the frames' last handles may go on any.
class FramePool {
public:
    /// At most `limit` frames are out at once; `wakeUp` is woken when one comes back.
    /// Errors: memory or the server refuses.
    static Result<std::unique_ptr<FramePool>> make(std::shared_ptr<X11Connection> connection,
                                                   xcb_render_pictformat_t argb32, int width, int height, int limit,
                                                   std::shared_ptr<WakeUp> wakeUp);
    ~FramePool();

    bool hasFree() const;
    /// Contents are whatever an earlier frame left. Only when hasFree().
    PooledFrame take();
    /// Waits until the server has painted what was asked.
    Result<void> finish(const PooledFrame& frame);

private:
    struct Segments;
    FramePool() = default;
    Result<void> addSegment(xcb_render_pictformat_t argb32);

    std::shared_ptr<X11Connection> m_connection;
    std::shared_ptr<Segments> m_segments;
    int m_width = 0;
    int m_height = 0;
    /// Where the server paints when it cannot paint into shared memory.
    xcb_pixmap_t m_serverPixmap = 0;
    xcb_render_picture_t m_serverPicture = 0;
};

} // namespace keldra
