#include "platform/x11/WindowPicture.h"

#include "platform/x11/X11Error.h"
#include "platform/x11/X11Properties.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

namespace keldra {

WindowPicture::WindowPicture(const X11Connection& connection, const RenderFormats& formats, xcb_window_t client)
    : m_connection(connection), m_formats(formats), m_client(client) {
    watch(client, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
}

WindowPicture::~WindowPicture() {
    leaveFrame();
}

void WindowPicture::watch(xcb_window_t window, std::uint32_t events) const {
    xcb_change_window_attributes(m_connection.raw(), window, XCB_CW_EVENT_MASK, &events);
}

bool WindowPicture::handle(const xcb_generic_event_t& event) {
    if (m_damage && m_damage->isReportedBy(event))
        return true;
    if (m_connection.extensions().shape.isEvent(event, XCB_SHAPE_NOTIFY)) {
        m_isPixmapStale = true;
        return true;
    }
    switch (event.response_type & 0x7f) {
    case XCB_CONFIGURE_NOTIFY:
        return handleConfigure(reinterpret_cast<const xcb_configure_notify_event_t&>(event));
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
        m_isPixmapStale = true;
        return true;
    case XCB_REPARENT_NOTIFY:
        m_isFrameStale = true;
        return true;
    case XCB_PROPERTY_NOTIFY: {
        const bool isShadow =
            reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == m_connection.atoms().frameExtents;
        m_isPixmapStale |= isShadow;
        return isShadow;
    }
    case XCB_DESTROY_NOTIFY: {
        const xcb_window_t destroyed = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
        m_isClosed |= destroyed == m_client;
        // A window manager that ends leaves its clients to the root.
        m_isFrameStale |= destroyed == m_frame;
        return true;
    }
    default:
        return false;
    }
}

bool WindowPicture::handleConfigure(const xcb_configure_notify_event_t& event) {
    // Window managers send clients made-up ones.
    if (event.window != m_frame || (event.response_type & 0x80) != 0)
        return false;
    const PixelRect rect{event.x, event.y, event.width + 2 * event.border_width, event.height + 2 * event.border_width};
    const bool isResized = rect.width != m_rect.width || rect.height != m_rect.height;
    m_rect = rect;
    m_isPixmapStale |= isResized;
    return isResized;
}

Error WindowPicture::goneError() const {
    return m_frame == 0 ? x11Error(X11ErrorCode::unknownWindow, "The window is not there any more.")
                        : x11Error(X11ErrorCode::windowClosed, "The recorded window was closed.");
}

Result<void> WindowPicture::update() {
    if (m_isClosed)
        return fail(goneError());
    if (m_isFrameStale)
        TRY(findFrame());
    if (m_isPixmapStale)
        readFrame();
    return {};
}

Result<void> WindowPicture::findFrame() {
    const X11Connection& x = m_connection;
    const std::optional<xcb_window_t> frame = topLevelOf(x, m_client);
    if (!frame)
        return fail(goneError());
    m_isFrameStale = false;
    m_isPixmapStale = true;
    if (*frame == m_frame)
        return {};
    leaveFrame();
    m_frame = *frame;
    if (m_frame != m_client)
        watch(m_frame, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    xcb_composite_redirect_window(x.raw(), m_frame, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    m_damage = std::make_unique<WindowDamage>(x, m_frame);
    return {};
}

void WindowPicture::leaveFrame() {
    if (m_frame == 0)
        return;
    m_pixmap.reset();
    m_damage.reset();
    xcb_composite_unredirect_window(m_connection.raw(), m_frame, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    if (m_frame != m_client)
        watch(m_frame, 0);
}

/// Takes the window's picture by its present name; one that has none shows nothing.
void WindowPicture::readFrame() {
    const X11Connection& x = m_connection;
    m_isPixmapStale = false;
    m_pixmap.reset();
    const auto attributesRequest = xcb_get_window_attributes(x.raw(), m_frame);
    const auto geometryRequest = xcb_get_geometry(x.raw(), m_frame);
    const auto shadowRequest = askProperty(x, m_client, x.atoms().frameExtents);
    const auto attributes = x.reply(xcb_get_window_attributes_reply, attributesRequest);
    const auto geometry = x.reply(xcb_get_geometry_reply, geometryRequest);
    m_shadow = shadowExtents(readNumbers(x, shadowRequest));
    if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return;
    m_rect = outerRect(*geometry);
    m_pixmap =
        std::make_unique<WindowPixmap>(x, m_formats.ofVisual(attributes->visual), m_frame, geometry->border_width);
}

PixelRect WindowPicture::area() const {
    return m_pixmap ? m_shadow.without(m_rect) : PixelRect{};
}

void WindowPicture::paint(xcb_render_picture_t picture) {
    const PixelRect shown = area();
    const PaintTarget target{picture, {shown.x, shown.y}};
    const QRect rect(shown.x, shown.y, shown.width, shown.height);
    m_damage->reset();
    if (m_pixmap->isShaped())
        paintBlack(m_connection, target, rect);
    m_pixmap->paint(target, {m_rect.x, m_rect.y}, rect, false);
}

} // namespace keldra
