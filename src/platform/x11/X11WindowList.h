#pragma once

#include "platform/WindowList.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11OwnWindows.h"

#include <memory>
#include <vector>

namespace keldra {

class X11WindowList final : public WindowList {
public:
    /// `scaleFactor`: pixels per point, one for the whole desktop.
    X11WindowList(std::shared_ptr<X11Connection> connection, double scaleFactor);
    QList<WindowInfo> windows() const override;
    std::optional<QRectF> liveFrame(std::uint32_t windowID) const override;

private:
    /// Front to back: what the window manager manages, or the children of the root where there is no manager.
    std::vector<xcb_window_t> stacking() const;

    std::shared_ptr<X11Connection> m_connection;
    X11OwnWindows m_ownWindows;
    double m_scaleFactor;
};

} // namespace keldra
