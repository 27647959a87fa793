#include "platform/x11/X11WindowGeometry.h"

namespace keldra {

ShadowExtents shadowExtents(const std::vector<std::uint32_t>& property) {
    if (property.size() < 4)
        return {};
    return {int(property[0]), int(property[1]), int(property[2]), int(property[3])};
}

std::optional<xcb_window_t> topLevelOf(const X11Connection& connection, xcb_window_t window) {
    while (true) {
        const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.raw(), window));
        if (!tree || tree->parent == XCB_WINDOW_NONE)
            return std::nullopt;
        if (tree->parent == connection.root())
            return window;
        window = tree->parent;
    }
}

} // namespace keldra
