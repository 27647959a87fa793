#include "platform/x11/CursorWatch.h"

#include <xcb/xfixes.h>

namespace keldra {

CursorWatch::CursorWatch(const X11Connection& connection) : m_connection(connection) {
    xcb_xfixes_select_cursor_input(connection.raw(), connection.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
}

bool CursorWatch::handle(const xcb_generic_event_t& event) {
    if (!m_connection.extensions().xfixes.isEvent(event, XCB_XFIXES_CURSOR_NOTIFY))
        return false;
    m_isImageStale = true;
    return true;
}

std::optional<QPoint> CursorWatch::position() const {
    const X11Connection& x = m_connection;
    const auto pointer = x.reply(xcb_query_pointer_reply, xcb_query_pointer(x.raw(), x.root()));
    if (!pointer || !pointer->same_screen)
        return std::nullopt;
    return QPoint(pointer->root_x, pointer->root_y);
}

const CursorImage& CursorWatch::image() {
    if (!m_isImageStale)
        return m_image;
    m_isImageStale = false;
    const X11Connection& x = m_connection;
    const auto cursor = x.reply(xcb_xfixes_get_cursor_image_reply, xcb_xfixes_get_cursor_image(x.raw()));
    if (!cursor) {
        m_image = {};
        return m_image;
    }
    const std::uint32_t* first = xcb_xfixes_get_cursor_image_cursor_image(cursor.get());
    m_image = {cursor->width,
               cursor->height,
               cursor->xhot,
               cursor->yhot,
               {first, first + xcb_xfixes_get_cursor_image_cursor_image_length(cursor.get())}};
    return m_image;
}

} // namespace keldra
