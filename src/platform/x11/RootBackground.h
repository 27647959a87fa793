#pragma once

#include "platform/x11/RenderFormats.h"
#include "platform/x11/RenderPaint.h"

namespace keldra {

/// The picture behind all windows, also where windows cover it. One thread.
///
/// Desktops that draw one publish its pixmap. Where nobody does, and no compositing manager runs, an invisible window
/// that borrows its parent's background shows it; else it is black.
class RootBackground {
public:
    RootBackground(const X11Connection& connection, const RenderFormats& formats);
    ~RootBackground();
    RootBackground(const RootBackground&) = delete;
    RootBackground& operator=(const RootBackground&) = delete;

    /// Looks again at what the background is.
    void refresh();
    void paint(const PaintTarget& target, const QRegion& region) const;

private:
    bool usePublishedPixmap();
    bool useBorrowedBackground();
    void showPicture(xcb_drawable_t drawable);
    void dropPicture();

    const X11Connection& m_connection;
    xcb_render_pictformat_t m_format;
    xcb_render_picture_t m_picture = 0;
    xcb_window_t m_borrower = 0;
    xcb_pixmap_t m_borrowed = 0;
};

} // namespace keldra
