#include "platform/x11/ComposedDesktop.h"

#include <xcb/shape.h>

namespace keldra {
namespace {

QRect toQRect(const PixelRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

} // namespace

ComposedDesktop::ComposedDesktop(const X11Connection& connection, const RenderFormats& formats)
    : m_connection(connection), m_formats(formats), m_background(connection, formats) {}

bool ComposedDesktop::handle(const xcb_generic_event_t& event) {
    const X11Extensions& extensions = m_connection.extensions();
    if (extensions.damage.isEvent(event, XCB_DAMAGE_NOTIFY)) {
        const auto found = m_shown.find(reinterpret_cast<const xcb_damage_notify_event_t&>(event).drawable);
        return found != m_shown.end() && !found->second.visible.isEmpty() && found->second.damage->isReportedBy(event);
    }
    if (extensions.shape.isEvent(event, XCB_SHAPE_NOTIFY)) {
        forgetPixmap(reinterpret_cast<const xcb_shape_notify_event_t&>(event).affected_window);
        return true;
    }
    switch (event.response_type & 0x7f) {
    case XCB_MAP_NOTIFY:
        forgetPixmap(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
        return true;
    case XCB_UNMAP_NOTIFY:
        return m_shown.contains(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
    case XCB_CIRCULATE_NOTIFY:
        return m_shown.contains(reinterpret_cast<const xcb_circulate_notify_event_t&>(event).window);
    case XCB_CONFIGURE_NOTIFY:
        return handleConfigure(reinterpret_cast<const xcb_configure_notify_event_t&>(event));
    case XCB_PROPERTY_NOTIFY: {
        const auto& changed = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (changed.window != m_connection.root() || changed.atom != m_connection.atoms().rootPixmap)
            return false;
        m_background.refresh();
        return true;
    }
    default:
        return false;
    }
}

bool ComposedDesktop::handleConfigure(const xcb_configure_notify_event_t& event) {
    const auto found = m_shown.find(event.window);
    if (found == m_shown.end())
        return false;
    if (found->second.rect.size() != QSize(event.width + 2 * event.border_width, event.height + 2 * event.border_width))
        forgetPixmap(event.window);
    return true;
}

void ComposedDesktop::forgetPixmap(xcb_window_t window) {
    m_isStale = true;
    if (const auto found = m_shown.find(window); found != m_shown.end())
        found->second.pixmap.reset();
}

void ComposedDesktop::show(const std::vector<X11TopLevel>& windows, const QRect& area) {
    m_isStale = false;
    m_blends = hasCompositingManager();
    std::map<xcb_window_t, Shown> shown;
    std::vector<PaintItem> items;
    m_order.clear();
    for (const X11TopLevel& window : windows) {
        const RenderFormats::Format format = m_formats.ofVisual(window.visual);
        if (!window.isVisible || window.isOwn || format.id == 0)
            continue;
        Shown& entry = shown[window.window];
        if (const auto known = m_shown.find(window.window); known != m_shown.end())
            entry = std::move(known->second);
        if (!entry.damage)
            entry.damage = std::make_unique<WindowDamage>(m_connection, window.window);
        if (!entry.pixmap || entry.rect.size() != toQRect(window.rect).size())
            entry.pixmap = std::make_unique<WindowPixmap>(m_connection, format, window.window, window.borderWidth);
        entry.rect = toQRect(window.rect);
        m_order.push_back(window.window);
        items.push_back({entry.rect, !entry.pixmap->isShaped() && !(entry.pixmap->hasAlpha() && m_blends)});
    }
    m_shown = std::move(shown);
    PaintPlan plan = planPainting(area, items);
    for (std::size_t i = 0; i < m_order.size(); ++i)
        m_shown[m_order[i]].visible = plan.items[i];
    m_visibleBackground = plan.background;
}

bool ComposedDesktop::usesOwn(const std::vector<X11TopLevel>& windows) const {
    for (const X11TopLevel& window : windows)
        if (window.isOwn && m_shown.contains(window.window))
            return true;
    return false;
}

void ComposedDesktop::paint(const PaintTarget& target) {
    for (const auto& [window, shown] : m_shown)
        if (!shown.visible.isEmpty())
            shown.damage->reset();
    m_background.paint(target, m_visibleBackground);
    for (const xcb_window_t window : m_order) {
        const Shown& shown = m_shown[window];
        shown.pixmap->paint(target, shown.rect.topLeft(), shown.visible, m_blends);
    }
}

bool ComposedDesktop::hasCompositingManager() const {
    const auto owner =
        m_connection.reply(xcb_get_selection_owner_reply,
                           xcb_get_selection_owner(m_connection.raw(), m_connection.atoms().compositingManager));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace keldra
