#pragma once

#include "platform/ScreenStream.h"
#include "platform/x11/ComposedDesktop.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/SourcePicture.h"
#include "platform/x11/WindowDamage.h"
#include "platform/x11/X11Monitors.h"
#include "platform/x11/X11TopLevels.h"

#include <cstdint>
#include <memory>

namespace keldra {

/// One monitor without our windows: the root's own pixels while none of ours is in the way, else (and for a while
/// after) all other windows painted over each other.
class DisplayPicture final : public SourcePicture {
public:
    DisplayPicture(const X11Connection& connection, const RenderFormats& formats, MonitorNumbers& numbers,
                   const DisplaySource& display);
    ~DisplayPicture() override;

    bool handle(const xcb_generic_event_t& event) override;
    bool recheck() override;
    Result<void> update() override;
    PixelRect area() const override { return m_area; }
    void paint(xcb_render_picture_t picture) override;
    bool isSpoiled() override;
    std::optional<std::chrono::steady_clock::time_point> readyAt() const override { return m_readyAt; }

private:
    std::optional<PixelRect> monitorRect() const;
    Result<void> findMonitor();
    bool hasOwn(bool onScreen) const;
    bool isOwnCreated(const xcb_generic_event_t& event) const;
    bool isRootDamageInside(const xcb_generic_event_t& event);
    void redirectWindows();
    void choosePath();

    const X11Connection& m_connection;
    const RenderFormats& m_formats;
    MonitorNumbers& m_numbers;
    const DisplaySource m_display;
    X11TopLevels m_topLevels;
    xcb_render_picture_t m_rootPicture;
    std::uint32_t m_changedRegion;
    // Root pixels: what frames show, the monitor, the screen, and what all three share.
    PixelRect m_area;
    PixelRect m_monitor;
    PixelRect m_root;
    PixelRect m_seen;
    std::uint64_t m_ownChanges = 0;
    bool m_isMonitorStale = true;
    bool m_isPlanStale = true;
    bool m_isRedirected = false;
    /// Exactly one of these two is there, once updated.
    std::unique_ptr<WindowDamage> m_rootDamage;
    std::unique_ptr<ComposedDesktop> m_composed;
    std::optional<std::chrono::steady_clock::time_point> m_readyAt;
    /// Until when the root's pixels are not trusted.
    std::chrono::steady_clock::time_point m_composedUntil;
};

} // namespace keldra
