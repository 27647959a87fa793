#include "platform/x11/X11TopLevels.h"

#include "platform/x11/X11WindowGeometry.h"

namespace keldra {

X11TopLevels::X11TopLevels(const X11Connection& connection, std::uint32_t rootEvents)
    : m_connection(connection), m_ownWindows(connection) {
    const std::uint32_t events = rootEvents | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.raw(), connection.root(), XCB_CW_EVENT_MASK, &events);
}

void X11TopLevels::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7f) {
    case XCB_CREATE_NOTIFY: {
        const auto& created = reinterpret_cast<const xcb_create_notify_event_t&>(event);
        forget(created.parent, created.window);
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const auto& destroyed = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        forget(destroyed.event, destroyed.window);
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        const auto& reparented = reinterpret_cast<const xcb_reparent_notify_event_t&>(event);
        forget(reparented.event, reparented.window);
        // A frame stays ours though its window may leave it again before it is looked at.
        if (reparented.event == m_connection.root() && reparented.parent != m_connection.root() &&
            m_ownWindows.owns(reparented.window))
            m_knownOwners[reparented.parent] = true;
        break;
    }
    case XCB_MAP_NOTIFY: {
        const auto& mapped = reinterpret_cast<const xcb_map_notify_event_t&>(event);
        noteChange(mapped.event, mapped.window);
        break;
    }
    case XCB_UNMAP_NOTIFY: {
        const auto& unmapped = reinterpret_cast<const xcb_unmap_notify_event_t&>(event);
        noteChange(unmapped.event, unmapped.window);
        break;
    }
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
        m_isStale = true;
        break;
    default:
        break;
    }
}

void X11TopLevels::noteChange(xcb_window_t parent, xcb_window_t window) {
    if (parent != m_connection.root() || isOfConnection(window))
        return;
    m_isStale = true;
    if (isOwn(window))
        ++m_ownChanges;
}

/// Who owns a window may change with the event.
void X11TopLevels::forget(xcb_window_t parent, xcb_window_t window) {
    if (parent != m_connection.root())
        return;
    m_knownOwners.erase(window);
    m_isStale = true;
}

void X11TopLevels::refresh() {
    const X11Connection& x = m_connection;
    m_isStale = false;
    m_windows.clear();
    const auto tree = x.reply(xcb_query_tree_reply, xcb_query_tree(x.raw(), x.root()));
    if (!tree)
        return;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    std::vector<std::pair<xcb_get_window_attributes_cookie_t, xcb_get_geometry_cookie_t>> requests;
    for (int i = 0; i < count; ++i)
        requests.emplace_back(xcb_get_window_attributes(x.raw(), children[i]), xcb_get_geometry(x.raw(), children[i]));
    for (int i = 0; i < count; ++i) {
        const auto attributes = x.reply(xcb_get_window_attributes_reply, requests[std::size_t(i)].first);
        const auto geometry = x.reply(xcb_get_geometry_reply, requests[std::size_t(i)].second);
        if (!attributes || !geometry || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT ||
            isOfConnection(children[i]))
            continue;
        X11TopLevel window;
        window.window = children[i];
        window.rect = outerRect(*geometry);
        window.borderWidth = geometry->border_width;
        window.visual = attributes->visual;
        window.isVisible = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        window.isOwn = isOwn(children[i]);
        m_windows.push_back(window);
    }
}

bool X11TopLevels::isOfConnection(xcb_window_t window) const {
    return m_connection.clientOf(window) == m_connection.ownClient();
}

bool X11TopLevels::isOwn(xcb_window_t window) {
    const auto known = m_knownOwners.find(window);
    if (known != m_knownOwners.end())
        return known->second;
    return m_knownOwners[window] = m_ownWindows.ownsTopLevel(window);
}

} // namespace keldra
