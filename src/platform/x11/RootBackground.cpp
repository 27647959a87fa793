#include "platform/x11/RootBackground.h"

#include "platform/x11/X11Properties.h"

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

namespace keldra {

RootBackground::RootBackground(const X11Connection& connection, const RenderFormats& formats)
    : m_connection(connection), m_format(formats.ofVisual(connection.screen().root_visual).id) {
    refresh();
}

RootBackground::~RootBackground() {
    dropPicture();
    if (m_borrower != 0)
        xcb_destroy_window(m_connection.raw(), m_borrower);
}

void RootBackground::refresh() {
    dropPicture();
    if (!usePublishedPixmap())
        useBorrowedBackground();
}

void RootBackground::dropPicture() {
    if (m_picture != 0)
        xcb_render_free_picture(m_connection.raw(), m_picture);
    if (m_borrowed != 0)
        xcb_free_pixmap(m_connection.raw(), m_borrowed);
    m_picture = 0;
    m_borrowed = 0;
}

bool RootBackground::usePublishedPixmap() {
    const X11Connection& x = m_connection;
    const auto published = readNumbers(x, askProperty(x, x.root(), x.atoms().rootPixmap));
    if (published.empty())
        return false;
    // The property outlives the pixmap of a program that ended badly.
    const auto geometry = x.reply(xcb_get_geometry_reply, xcb_get_geometry(x.raw(), published.front()));
    if (!geometry || geometry->depth != x.screen().root_depth)
        return false;
    showPicture(published.front());
    return true;
}

bool RootBackground::useBorrowedBackground() {
    const X11Connection& x = m_connection;
    const auto root = x.reply(xcb_get_geometry_reply, xcb_get_geometry(x.raw(), x.root()));
    if (!root)
        return false;
    if (m_borrower != 0)
        xcb_destroy_window(x.raw(), m_borrower);
    m_borrower = x.newID();
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    xcb_create_window(x.raw(), XCB_COPY_FROM_PARENT, m_borrower, x.root(), 0, 0, root->width, root->height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
    // Redirected by hand and never painted by anybody, it is invisible; only one client may do that with a window.
    if (!x.check(xcb_composite_redirect_window_checked(x.raw(), m_borrower, XCB_COMPOSITE_REDIRECT_MANUAL),
                 "background")) {
        xcb_destroy_window(x.raw(), m_borrower);
        m_borrower = 0;
        return false;
    }
    const std::uint32_t nothing = x.newID();
    xcb_xfixes_create_region(x.raw(), nothing, 0, nullptr);
    xcb_xfixes_set_window_shape_region(x.raw(), m_borrower, XCB_SHAPE_SK_INPUT, 0, 0, nothing);
    xcb_xfixes_destroy_region(x.raw(), nothing);
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(x.raw(), m_borrower, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    xcb_map_window(x.raw(), m_borrower);
    m_borrowed = x.newID();
    xcb_composite_name_window_pixmap(x.raw(), m_borrower, m_borrowed);
    showPicture(m_borrowed);
    return true;
}

void RootBackground::showPicture(xcb_drawable_t drawable) {
    m_picture = m_connection.newID();
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    xcb_render_create_picture(m_connection.raw(), m_picture, drawable, m_format, XCB_RENDER_CP_REPEAT, &repeat);
}

void RootBackground::paint(const PaintTarget& target, const QRegion& region) const {
    if (m_picture == 0)
        paintBlack(m_connection, target, region);
    else
        paintRegion(m_connection, XCB_RENDER_PICT_OP_SRC, m_picture, {0, 0}, target, region);
}

} // namespace keldra
