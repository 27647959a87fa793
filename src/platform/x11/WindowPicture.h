#pragma once

#include "platform/x11/RenderFormats.h"
#include "platform/x11/SourcePicture.h"
#include "platform/x11/WindowDamage.h"
#include "platform/x11/WindowPixmap.h"
#include "platform/x11/X11WindowGeometry.h"

#include <memory>

namespace keldra {

/// One window with its decoration and without its shadow, whatever covers it. While it is not mapped there is nothing
/// to see.
class WindowPicture final : public SourcePicture {
public:
    WindowPicture(const X11Connection& connection, const RenderFormats& formats, xcb_window_t client);
    ~WindowPicture() override;

    bool handle(const xcb_generic_event_t& event) override;
    Result<void> update() override;
    PixelRect area() const override;
    void paint(xcb_render_picture_t picture) override;

private:
    bool handleConfigure(const xcb_configure_notify_event_t& event);
    Result<void> findFrame();
    void leaveFrame();
    void readFrame();
    void watch(xcb_window_t window, std::uint32_t events) const;
    Error goneError() const;

    const X11Connection& m_connection;
    const RenderFormats& m_formats;
    const xcb_window_t m_client;
    /// The child of the root that holds the client, once found.
    xcb_window_t m_frame = 0;
    PixelRect m_rect;
    ShadowExtents m_shadow;
    bool m_isFrameStale = true;
    bool m_isPixmapStale = true;
    bool m_isClosed = false;
    std::unique_ptr<WindowDamage> m_damage;
    std::unique_ptr<WindowPixmap> m_pixmap;
};

} // namespace keldra
