#pragma once

#include "platform/x11/PaintPlan.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/RootBackground.h"
#include "platform/x11/WindowDamage.h"
#include "platform/x11/WindowPixmap.h"
#include "platform/x11/X11TopLevels.h"

#include <map>
#include <memory>
#include <vector>

namespace keldra {

/// Paints the desktop as it would look without our windows, from the pictures of all others. All children of the root
/// must be redirected. One thread.
class ComposedDesktop {
public:
    ComposedDesktop(const X11Connection& connection, const RenderFormats& formats);

    /// Takes in one event; answers whether what is seen may have changed.
    bool handle(const xcb_generic_event_t& event);
    /// The windows to show inside `area` (root pixels), from the bottom to the top; ours are left out.
    void show(const std::vector<X11TopLevel>& windows, const QRect& area);
    /// Whether show() must be called before the next paint(): a window has a new picture.
    bool isStale() const { return m_isStale; }
    /// Whether one of those that paint() uses is among these and ours by now.
    bool usesOwn(const std::vector<X11TopLevel>& windows) const;
    /// Reports changes from here on, and paints what is there now.
    void paint(const PaintTarget& target);

private:
    struct Shown {
        std::unique_ptr<WindowDamage> damage;
        std::unique_ptr<WindowPixmap> pixmap;
        QRect rect;
        QRegion visible;
    };
    bool handleConfigure(const xcb_configure_notify_event_t& event);
    void forgetPixmap(xcb_window_t window);
    bool hasCompositingManager() const;

    const X11Connection& m_connection;
    const RenderFormats& m_formats;
    RootBackground m_background;
    bool m_blends = false;
    bool m_isStale = true;
    std::map<xcb_window_t, Shown> m_shown;
    std::vector<xcb_window_t> m_order;
    QRegion m_visibleBackground;
};

} // namespace keldra
