#include "platform/x11/WindowPixmap.h"

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

namespace keldra {

WindowPixmap::WindowPixmap(const X11Connection& connection, RenderFormats::Format format, xcb_window_t window,
                           int borderWidth)
    : m_connection(connection)
    , m_pixmap(connection.newID())
    , m_picture(connection.newID())
    , m_borderWidth(borderWidth)
    , m_hasAlpha(format.hasAlpha) {
    const X11Connection& x = connection;
    xcb_composite_name_window_pixmap(x.raw(), window, m_pixmap);
    xcb_render_create_picture(x.raw(), m_picture, m_pixmap, format.id, 0, nullptr);
    if (!x.extensions().shape.isPresent)
        return;
    xcb_shape_select_input(x.raw(), window, 1);
    const auto extents = x.reply(xcb_shape_query_extents_reply, xcb_shape_query_extents(x.raw(), window));
    if (extents && extents->bounding_shaped) {
        m_shape = x.newID();
        xcb_xfixes_create_region_from_window(x.raw(), m_shape, window, XCB_SHAPE_SK_BOUNDING);
    }
}

WindowPixmap::~WindowPixmap() {
    if (m_shape != 0)
        xcb_xfixes_destroy_region(m_connection.raw(), m_shape);
    xcb_render_free_picture(m_connection.raw(), m_picture);
    xcb_free_pixmap(m_connection.raw(), m_pixmap);
}

void WindowPixmap::paint(const PaintTarget& target, QPoint corner, const QRegion& region, bool blends) const {
    if (region.isEmpty())
        return;
    const X11Connection& x = m_connection;
    if (isShaped()) {
        const QPoint inner = corner + QPoint(m_borderWidth, m_borderWidth) - target.origin;
        xcb_xfixes_set_picture_clip_region(x.raw(), target.picture, m_shape, std::int16_t(inner.x()),
                                           std::int16_t(inner.y()));
    }
    // Colours are premultiplied: over black they are what a screen without alpha shows, and the result is opaque.
    if (m_hasAlpha && !blends)
        paintBlack(x, target, region);
    paintRegion(x, m_hasAlpha ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, m_picture, corner, target, region);
    if (isShaped())
        xcb_xfixes_set_picture_clip_region(x.raw(), target.picture, 0, 0, 0);
}

} // namespace keldra
