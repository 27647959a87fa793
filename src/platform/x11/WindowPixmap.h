#pragma once

#include "imaging/Geometry.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/RenderPaint.h"

namespace keldra {

/// The whole picture of one redirected child of the root, whatever covers it. The server gives a window a new one
/// whenever it is mapped or resized; this one then stays as it was.
class WindowPixmap {
public:
    /// The window must be redirected and viewable. What fails is never painted.
    WindowPixmap(const X11Connection& connection, RenderFormats::Format format, xcb_window_t window, int borderWidth);
    ~WindowPixmap();
    WindowPixmap(const WindowPixmap&) = delete;
    WindowPixmap& operator=(const WindowPixmap&) = delete;

    bool hasAlpha() const { return m_hasAlpha; }
    bool isShaped() const { return m_shape != 0; }
    /// Paints `region` (root pixels) of the window, whose outer top-left corner lies at `corner` (root pixels).
    /// `blends`: whether the window's alpha counts; else it is painted as on a screen without a compositing manager.
    void paint(const PaintTarget& target, QPoint corner, const QRegion& region, bool blends) const;

private:
    const X11Connection& m_connection;
    xcb_pixmap_t m_pixmap;
    xcb_render_picture_t m_picture;
    /// The bounding shape relative to the inner corner; 0 for a plain rectangle.
    std::uint32_t m_shape = 0;
    int m_borderWidth;
    bool m_hasAlpha;
};

} // namespace keldra
