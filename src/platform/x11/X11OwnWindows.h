#pragma once

#include "platform/x11/X11Connection.h"

#include <cstdint>
#include <optional>

namespace keldra {

/// Tells the windows of this process from all others, by the client that made them, not by what they say of
/// themselves. Any thread.
class X11OwnWindows {
public:
    explicit X11OwnWindows(const X11Connection& connection);

    /// Whether this process made that window, on any of its connections.
    bool owns(xcb_window_t window) const;
    /// Whether a child of the root is ours: made by us, or the frame that a window manager put around one of ours. A
    /// program that took one of our windows in, such as a tray, stays foreign.
    bool ownsTopLevel(xcb_window_t topLevel) const;

private:
    std::optional<std::uint32_t> processOf(std::uint32_t resource) const;
    bool framesOwn(xcb_window_t window, int depth) const;

    const X11Connection& m_connection;
    /// What the server believes our process number to be; it sees another one than we when we run in a container.
    std::optional<std::uint32_t> m_ownProcess;
};

} // namespace keldra
