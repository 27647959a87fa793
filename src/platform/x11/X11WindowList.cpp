#include "platform/x11/X11WindowList.h"

#include "platform/x11/DesktopSpace.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/X11Properties.h"
#include "platform/x11/X11WindowGeometry.h"

#include <algorithm>
#include <utility>

namespace keldra {
namespace {

/// What is asked about one window; all windows are asked before the first answer is awaited.
struct WindowQuery {
    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_property_cookie_t name;
    xcb_get_property_cookie_t oldName;
    xcb_get_property_cookie_t ownerClass;
    xcb_get_property_cookie_t type;
    xcb_get_property_cookie_t opacity;
    xcb_get_property_cookie_t shadow;
};

WindowQuery ask(const X11Connection& x, xcb_window_t window) {
    const X11Atoms& atoms = x.atoms();
    return {window,
            xcb_get_window_attributes(x.raw(), window),
            askProperty(x, window, atoms.windowName),
            askProperty(x, window, XCB_ATOM_WM_NAME),
            askProperty(x, window, XCB_ATOM_WM_CLASS),
            askProperty(x, window, atoms.windowType),
            askProperty(x, window, atoms.windowOpacity),
            askProperty(x, window, atoms.frameExtents)};
}

/// The layer of the first type that we know; nothing for the desktop's own window.
std::optional<int> layerOf(const X11Atoms& atoms, const std::vector<std::uint32_t>& types) {
    const std::pair<xcb_atom_t, int> layers[] = {
        {atoms.windowTypeNormal, 0},  {atoms.windowTypeDialog, 0},        {atoms.windowTypeToolbar, 3},
        {atoms.windowTypeUtility, 3}, {atoms.windowTypeSplash, 8},        {atoms.windowTypeDock, 20},
        {atoms.windowTypeMenu, 24},   {atoms.windowTypeNotification, 25},
    };
    for (const std::uint32_t type : types) {
        if (type == atoms.windowTypeDesktop)
            return std::nullopt;
        for (const auto& [known, layer] : layers)
            if (type == known)
                return layer;
    }
    return types.empty() ? 0 : 1;
}

double alphaOf(const std::vector<std::uint32_t>& opacity) {
    return opacity.empty() ? 1.0 : opacity.front() / double(0xffffffff);
}

/// The frame around that window, root pixels, without its shadow.
std::optional<PixelRect> frameRect(const X11Connection& x, xcb_window_t window, const ShadowExtents& shadow) {
    const std::optional<xcb_window_t> topLevel = topLevelOf(x, window);
    if (!topLevel)
        return std::nullopt;
    const auto geometry = x.reply(xcb_get_geometry_reply, xcb_get_geometry(x.raw(), *topLevel));
    if (!geometry)
        return std::nullopt;
    return shadow.without(outerRect(*geometry));
}

} // namespace

X11WindowList::X11WindowList(std::shared_ptr<X11Connection> connection, double scaleFactor)
    : m_connection(std::move(connection)), m_ownWindows(*m_connection), m_scaleFactor(scaleFactor) {}

QList<WindowInfo> X11WindowList::windows() const {
    const X11Connection& x = *m_connection;
    const std::vector<X11Monitor> monitors = readMonitors(x);
    if (monitors.empty())
        return {};
    const DesktopSpace space{m_scaleFactor, monitors.front().rect};

    std::vector<WindowQuery> queries;
    for (const xcb_window_t window : stacking())
        queries.push_back(ask(x, window));

    QList<WindowInfo> windows;
    for (const WindowQuery& query : queries) {
        // Every answer is taken, even when an earlier one already leaves the window out.
        const auto attributes = x.reply(xcb_get_window_attributes_reply, query.attributes);
        const QString name = readText(x, query.name);
        const QString oldName = readText(x, query.oldName);
        const QString owner = readClass(x, query.ownerClass);
        const std::optional<int> layer = layerOf(x.atoms(), readNumbers(x, query.type));
        const double alpha = alphaOf(readNumbers(x, query.opacity));
        const ShadowExtents shadow = shadowExtents(readNumbers(x, query.shadow));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT || !layer)
            continue;
        const std::optional<PixelRect> frame = frameRect(x, query.window, shadow);
        if (!frame)
            continue;
        WindowInfo info;
        info.windowID = query.window;
        info.title = !name.isEmpty() ? name : !oldName.isEmpty() ? oldName : owner;
        info.owner = owner;
        info.frame = space.toPoints(*frame);
        info.layer = *layer;
        info.alpha = alpha;
        info.isOwn = m_ownWindows.owns(query.window);
        windows.append(info);
    }
    return windows;
}

std::optional<QRectF> X11WindowList::liveFrame(std::uint32_t windowID) const {
    const X11Connection& x = *m_connection;
    const auto shadowRequest = askProperty(x, windowID, x.atoms().frameExtents);
    const ShadowExtents shadow = shadowExtents(readNumbers(x, shadowRequest));
    const std::optional<PixelRect> frame = frameRect(x, windowID, shadow);
    const std::vector<X11Monitor> monitors = readMonitors(x);
    if (!frame || monitors.empty())
        return std::nullopt;
    return DesktopSpace{m_scaleFactor, monitors.front().rect}.toPoints(*frame);
}

std::vector<xcb_window_t> X11WindowList::stacking() const {
    const X11Connection& x = *m_connection;
    const auto managedRequest = askProperty(x, x.root(), x.atoms().clientList);
    std::vector<xcb_window_t> windows = readNumbers(x, askProperty(x, x.root(), x.atoms().clientListStacking));
    // The newest may not have been given a place yet (by xfwm4: not before anything is raised).
    for (const xcb_window_t managed : readNumbers(x, managedRequest))
        if (std::find(windows.begin(), windows.end(), managed) == windows.end())
            windows.push_back(managed);
    if (windows.empty()) {
        const bool hasManager = !readNumbers(x, askProperty(x, x.root(), x.atoms().supportingWindowManager)).empty();
        const auto tree = x.reply(xcb_query_tree_reply, xcb_query_tree(x.raw(), x.root()));
        if (hasManager || !tree)
            return {};
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        windows.assign(children, children + xcb_query_tree_children_length(tree.get()));
    }
    std::reverse(windows.begin(), windows.end());
    return windows;
}

} // namespace keldra
