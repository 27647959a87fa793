#pragma once

#include "imaging/FrameFit.h"
#include "platform/x11/X11Connection.h"

#include <xcb/render.h>

namespace keldra {

/// A picture on the server that is painted at its own size and then scaled into frames of another.
class ScaledPaint {
public:
    ScaledPaint(const X11Connection& connection, xcb_render_pictformat_t argb32, int width, int height);
    ~ScaledPaint();
    ScaledPaint(const ScaledPaint&) = delete;
    ScaledPaint& operator=(const ScaledPaint&) = delete;

    bool hasSize(int width, int height) const { return m_width == width && m_height == height; }
    xcb_render_picture_t picture() const { return m_picture; }
    /// Scales it into a frame, black around it.
    void paint(xcb_render_picture_t frame, int frameWidth, int frameHeight, const FrameFit& fit) const;

private:
    const X11Connection& m_connection;
    xcb_render_picture_t m_picture;
    int m_width;
    int m_height;
};

} // namespace keldra
