#pragma once

#include "imaging/Geometry.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11OwnWindows.h"

#include <map>
#include <vector>

namespace keldra {

/// A child of the root window.
struct X11TopLevel {
    xcb_window_t window = 0;
    /// With its border, root pixels.
    PixelRect rect;
    int borderWidth = 0;
    xcb_visualid_t visual = 0;
    /// On the screen and with pixels of its own.
    bool isVisible = false;
    /// Ours, or a window manager's frame around one of ours.
    bool isOwn = false;
};

/// Follows the children of the root by the events that tell of them. One thread.
class X11TopLevels {
public:
    /// From here on the connection gets the events; `rootEvents` are other events of the root that the caller wants.
    X11TopLevels(const X11Connection& connection, std::uint32_t rootEvents);

    void handle(const xcb_generic_event_t& event);
    /// Whether events told of changes since the list was read.
    bool isStale() const { return m_isStale; }
    /// How often one of ours has come onto the screen or left it so far, also those that are long gone.
    std::uint64_t ownChanges() const { return m_ownChanges; }
    /// Reads the list again.
    void refresh();
    /// From the bottom to the top, without what this connection made.
    const std::vector<X11TopLevel>& windows() const { return m_windows; }
    const X11OwnWindows& ownWindows() const { return m_ownWindows; }

private:
    void noteChange(xcb_window_t parent, xcb_window_t window);
    void forget(xcb_window_t parent, xcb_window_t window);
    bool isOwn(xcb_window_t window);
    bool isOfConnection(xcb_window_t window) const;

    const X11Connection& m_connection;
    X11OwnWindows m_ownWindows;
    std::vector<X11TopLevel> m_windows;
    /// Answers that hold as long as the window is a child of the root.
    std::map<xcb_window_t, bool> m_knownOwners;
    bool m_isStale = true;
    std::uint64_t m_ownChanges = 0;
};

} // namespace keldra
