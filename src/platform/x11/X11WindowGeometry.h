#pragma once

#include "imaging/Geometry.h"
#include "platform/x11/X11Connection.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace keldra {

/// Borders of its own that a program draws around a window for its shadow, in pixels.
struct ShadowExtents {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;

    PixelRect without(const PixelRect& rect) const {
        const PixelRect inner{rect.x + left, rect.y + top, rect.width - left - right, rect.height - top - bottom};
        return inner.isEmpty() ? rect : inner;
    }
    friend bool operator==(const ShadowExtents&, const ShadowExtents&) = default;
};

/// From the numbers of the window's property: left, right, top, bottom.
ShadowExtents shadowExtents(const std::vector<std::uint32_t>& property);

/// The child of the root that holds that window; nothing when the window is gone.
std::optional<xcb_window_t> topLevelOf(const X11Connection& connection, xcb_window_t window);

/// A window's rectangle in its parent, its border included; for a child of the root, in root pixels.
inline PixelRect outerRect(const xcb_get_geometry_reply_t& geometry) {
    return {geometry.x, geometry.y, geometry.width + 2 * geometry.border_width,
            geometry.height + 2 * geometry.border_width};
}

} // namespace keldra
