#pragma once

#include "platform/x11/X11Connection.h"

#include <map>
#include <xcb/render.h>

namespace keldra {

/// How the server describes the pixels of its visuals.
class RenderFormats {
public:
    struct Format {
        xcb_render_pictformat_t id = 0;
        bool hasAlpha = false;
    };

    explicit RenderFormats(const X11Connection& connection);
    /// Format 0 for a visual that cannot be painted.
    Format ofVisual(xcb_visualid_t visual) const;
    /// 8 bits each of alpha, red, green, blue.
    xcb_render_pictformat_t argb32() const { return m_argb32; }

private:
    std::map<xcb_visualid_t, Format> m_visuals;
    xcb_render_pictformat_t m_argb32 = 0;
};

} // namespace keldra
