#include "platform/x11/X11Monitors.h"

#include <algorithm>
#include <xcb/randr.h>

namespace keldra {
namespace {

std::vector<X11Monitor> wholeRoot(const X11Connection& connection) {
    const auto root = connection.reply(xcb_get_geometry_reply, xcb_get_geometry(connection.raw(), connection.root()));
    if (!root)
        return {};
    return {{"screen", {0, 0, root->width, root->height}}};
}

} // namespace

std::vector<X11Monitor> readMonitors(const X11Connection& connection) {
    if (!connection.extensions().randr.isPresent)
        return wholeRoot(connection);
    const auto answer =
        connection.reply(xcb_randr_get_monitors_reply, xcb_randr_get_monitors(connection.raw(), connection.root(), 1));
    if (!answer)
        return wholeRoot(connection);

    std::vector<xcb_randr_monitor_info_t> infos;
    std::vector<xcb_get_atom_name_cookie_t> names;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(answer.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        infos.push_back(*each.data);
        names.push_back(xcb_get_atom_name(connection.raw(), each.data->name));
    }
    std::vector<X11Monitor> monitors;
    std::size_t primary = 0;
    for (std::size_t i = 0; i < infos.size(); ++i) {
        const auto name = connection.reply(xcb_get_atom_name_reply, names[i]);
        if (infos[i].primary)
            primary = i;
        monitors.push_back({name ? std::string(xcb_get_atom_name_name(name.get()),
                                               std::size_t(xcb_get_atom_name_name_length(name.get())))
                                 : std::string(),
                            {infos[i].x, infos[i].y, infos[i].width, infos[i].height}});
    }
    if (monitors.empty())
        return wholeRoot(connection);
    std::rotate(monitors.begin(), monitors.begin() + std::ptrdiff_t(primary),
                monitors.begin() + std::ptrdiff_t(primary) + 1);
    return monitors;
}

std::uint32_t MonitorNumbers::numberOf(const std::string& name) {
    const std::lock_guard guard(m_lock);
    return m_numbers.try_emplace(name, std::uint32_t(m_numbers.size() + 1)).first->second;
}

} // namespace keldra
