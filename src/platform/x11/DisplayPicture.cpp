#include "platform/x11/DisplayPicture.h"

#include "platform/x11/X11Error.h"

#include <algorithm>
#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

namespace keldra {
namespace {

/// How long programs get to draw the parts of their windows that ours covered until now, and window managers to clear
/// away.
constexpr std::chrono::milliseconds settlingTime{50};
/// How long the windows are still composed after ours went: they often come back.
constexpr std::chrono::seconds composedTime{1};

QRect toQRect(const PixelRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

} // namespace

DisplayPicture::DisplayPicture(const X11Connection& connection, const RenderFormats& formats, MonitorNumbers& numbers,
                               const DisplaySource& display)
    : m_connection(connection)
    , m_formats(formats)
    , m_numbers(numbers)
    , m_display(display)
    , m_topLevels(connection, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY)
    , m_rootPicture(connection.newID())
    , m_changedRegion(connection.newID()) {
    const X11Connection& x = connection;
    const std::uint32_t inferiors = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    xcb_render_create_picture(x.raw(), m_rootPicture, x.root(), formats.ofVisual(x.screen().root_visual).id,
                              XCB_RENDER_CP_SUBWINDOW_MODE, &inferiors);
    xcb_xfixes_create_region(x.raw(), m_changedRegion, 0, nullptr);
    if (x.extensions().randr.isPresent)
        xcb_randr_select_input(x.raw(), x.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
}

DisplayPicture::~DisplayPicture() {
    xcb_xfixes_destroy_region(m_connection.raw(), m_changedRegion);
    xcb_render_free_picture(m_connection.raw(), m_rootPicture);
    if (m_isRedirected)
        xcb_composite_unredirect_subwindows(m_connection.raw(), m_connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

bool DisplayPicture::handle(const xcb_generic_event_t& event) {
    const X11Extensions& extensions = m_connection.extensions();
    const bool isRootConfigured =
        (event.response_type & 0x7f) == XCB_CONFIGURE_NOTIFY &&
        reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == m_connection.root();
    if (isRootConfigured || extensions.randr.isEvent(event, XCB_RANDR_SCREEN_CHANGE_NOTIFY) ||
        extensions.randr.isEvent(event, XCB_RANDR_NOTIFY)) {
        m_isMonitorStale = true;
        return true;
    }
    // Redirected before they are shown, our windows never hide what others would have to draw again.
    if (!m_isRedirected && isOwnCreated(event))
        redirectWindows();
    m_topLevels.handle(event);
    if (m_topLevels.ownChanges() != m_ownChanges)
        m_composedUntil = std::chrono::steady_clock::now() + composedTime;
    return m_composed ? m_composed->handle(event) : isRootDamageInside(event);
}

bool DisplayPicture::isOwnCreated(const xcb_generic_event_t& event) const {
    if ((event.response_type & 0x7f) != XCB_CREATE_NOTIFY)
        return false;
    const auto& created = reinterpret_cast<const xcb_create_notify_event_t&>(event);
    return created.parent == m_connection.root() && m_topLevels.ownWindows().owns(created.window);
}

bool DisplayPicture::isRootDamageInside(const xcb_generic_event_t& event) {
    if (!m_rootDamage || !m_rootDamage->isReportedBy(event))
        return false;
    if (m_seen == m_root)
        return true;
    const X11Connection& x = m_connection;
    m_rootDamage->reset(m_changedRegion);
    const auto changed = x.reply(xcb_xfixes_fetch_region_reply, xcb_xfixes_fetch_region(x.raw(), m_changedRegion));
    if (!changed)
        return true;
    const xcb_rectangle_t* rectangles = xcb_xfixes_fetch_region_rectangles(changed.get());
    return std::any_of(rectangles, rectangles + xcb_xfixes_fetch_region_rectangles_length(changed.get()),
                       [this](const xcb_rectangle_t& each) {
                           return !m_seen.intersection({each.x, each.y, each.width, each.height}).isEmpty();
                       });
}

Result<void> DisplayPicture::update() {
    if (m_isMonitorStale)
        TRY(findMonitor());
    if (m_topLevels.isStale()) {
        m_topLevels.refresh();
        m_isPlanStale = true;
    }
    m_ownChanges = m_topLevels.ownChanges();
    if (m_composed && std::chrono::steady_clock::now() >= m_composedUntil)
        m_isPlanStale = true;
    if (m_isPlanStale || (m_composed && m_composed->isStale()))
        choosePath();
    return {};
}

void DisplayPicture::choosePath() {
    const auto now = std::chrono::steady_clock::now();
    m_isPlanStale = false;
    // What we hid just before the stream began may still be on the screen, and in a manager's frame that is about to
    // go.
    const bool isFirstSeen = !m_isRedirected && hasOwn(false);
    if (isFirstSeen) {
        redirectWindows();
        m_readyAt = now + settlingTime;
    }
    if (isFirstSeen || hasOwn(true))
        m_composedUntil = now + composedTime;
    if (now >= m_composedUntil) {
        m_composed.reset();
        if (!m_rootDamage)
            m_rootDamage = std::make_unique<WindowDamage>(m_connection, m_connection.root());
        return;
    }
    m_rootDamage.reset();
    if (!m_composed)
        m_composed = std::make_unique<ComposedDesktop>(m_connection, m_formats);
    m_composed->show(m_topLevels.windows(), toQRect(m_seen));
}

/// Servers announce outputs that come and go, but not monitors that a user made of parts of them.
bool DisplayPicture::recheck() {
    m_isMonitorStale |= monitorRect() != m_monitor;
    return m_isMonitorStale;
}

std::optional<PixelRect> DisplayPicture::monitorRect() const {
    for (const X11Monitor& monitor : readMonitors(m_connection))
        if (m_numbers.numberOf(monitor.name) == m_display.displayID)
            return monitor.rect;
    return std::nullopt;
}

Result<void> DisplayPicture::findMonitor() {
    const X11Connection& x = m_connection;
    m_isMonitorStale = false;
    m_isPlanStale = true;
    const auto root = x.reply(xcb_get_geometry_reply, xcb_get_geometry(x.raw(), x.root()));
    const std::optional<PixelRect> rect = monitorRect();
    if (!root)
        return fail(x11Error(X11ErrorCode::connectionLost, "The X display went away."));
    if (!rect)
        return fail(m_area.isEmpty()
                        ? x11Error(X11ErrorCode::unknownDisplay, "That display is not connected.")
                        : x11Error(X11ErrorCode::displayDisconnected, "The recorded display was disconnected."));
    const bool keepsSize = m_display.keepsScale && !m_area.isEmpty();
    m_area = keepsSize ? PixelRect{rect->x, rect->y, m_area.width, m_area.height} : *rect;
    m_monitor = *rect;
    m_root = {0, 0, root->width, root->height};
    m_seen = m_area.intersection(m_monitor).intersection(m_root);
    return {};
}

/// Whether we have a window at all, or one on the screen within the area.
bool DisplayPicture::hasOwn(bool onScreen) const {
    return std::any_of(m_topLevels.windows().begin(), m_topLevels.windows().end(), [&](const X11TopLevel& window) {
        return window.isOwn && (!onScreen || (window.isVisible && !m_seen.intersection(window.rect).isEmpty()));
    });
}

void DisplayPicture::redirectWindows() {
    m_isRedirected = true;
    xcb_composite_redirect_subwindows(m_connection.raw(), m_connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

void DisplayPicture::paint(xcb_render_picture_t picture) {
    const PaintTarget target{picture, {m_area.x, m_area.y}};
    if (const QRegion outside = QRegion(toQRect(m_area)) - toQRect(m_seen); !outside.isEmpty())
        paintBlack(m_connection, target, outside);
    if (m_composed) {
        m_composed->paint(target);
        return;
    }
    m_rootDamage->reset();
    paintRegion(m_connection, XCB_RENDER_PICT_OP_SRC, m_rootPicture, {0, 0}, target, toQRect(m_seen));
}

bool DisplayPicture::isSpoiled() {
    if (!m_topLevels.isStale())
        return false;
    m_topLevels.refresh();
    m_isPlanStale = true;
    if (m_composed)
        return m_composed->usesOwn(m_topLevels.windows());
    // One that came may be gone again.
    return hasOwn(true) || m_topLevels.ownChanges() != m_ownChanges;
}

} // namespace keldra
