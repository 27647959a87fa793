#include "platform/x11/X11OwnWindows.h"

#include "platform/x11/X11Properties.h"

#include <unistd.h>
#include <xcb/res.h>

namespace keldra {
namespace {

/// Window managers put at most a few windows of their own around a client.
constexpr int maximumFrameDepth = 3;

} // namespace

X11OwnWindows::X11OwnWindows(const X11Connection& connection)
    : m_connection(connection), m_ownProcess(processOf(connection.ownClient())) {}

std::optional<std::uint32_t> X11OwnWindows::processOf(std::uint32_t resource) const {
    if (!m_connection.extensions().resource.isPresent)
        return std::nullopt;
    const xcb_res_client_id_spec_t wanted{resource, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto answer =
        m_connection.reply(xcb_res_query_client_ids_reply, xcb_res_query_client_ids(m_connection.raw(), 1, &wanted));
    if (!answer)
        return std::nullopt;
    for (auto each = xcb_res_query_client_ids_ids_iterator(answer.get()); each.rem > 0;
         xcb_res_client_id_value_next(&each)) {
        const auto& [kind, byteCount] = *each.data;
        if (kind.mask == XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID && byteCount >= 4)
            return *xcb_res_client_id_value_value(each.data);
    }
    return std::nullopt;
}

bool X11OwnWindows::owns(xcb_window_t window) const {
    if (m_connection.clientOf(window) == m_connection.ownClient())
        return true;
    if (m_ownProcess)
        return processOf(window) == m_ownProcess;
    const auto claimed =
        readNumbers(m_connection, askProperty(m_connection, window, m_connection.atoms().windowProcess));
    return !claimed.empty() && claimed.front() == std::uint32_t(getpid());
}

bool X11OwnWindows::ownsTopLevel(xcb_window_t topLevel) const {
    if (owns(topLevel))
        return true;
    // Without a window manager nothing is framed; and what is managed itself is no frame.
    const auto manager = askProperty(m_connection, m_connection.root(), m_connection.atoms().supportingWindowManager);
    const auto state = askProperty(m_connection, topLevel, m_connection.atoms().windowState);
    const bool isManaged = !readNumbers(m_connection, manager).empty();
    const bool isClient = !readNumbers(m_connection, state).empty();
    return isManaged && !isClient && framesOwn(topLevel, 1);
}

bool X11OwnWindows::framesOwn(xcb_window_t window, int depth) const {
    const auto tree = m_connection.reply(xcb_query_tree_reply, xcb_query_tree(m_connection.raw(), window));
    if (!tree)
        return false;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const bool isPartOfFrame = m_connection.clientOf(children[i]) == m_connection.clientOf(window);
        if (isPartOfFrame ? depth < maximumFrameDepth && framesOwn(children[i], depth + 1) : owns(children[i]))
            return true;
    }
    return false;
}

} // namespace keldra
