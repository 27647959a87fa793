#pragma once

#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <optional>

namespace keldra {

/// One window on the screen.
struct WindowInfo {
    /// The client window.
    std::uint32_t windowID = 0;
    QString title;
    /// The program's class, e.g. "firefox".
    QString owner;
    /// The frame with its decoration and without its shadow, desktop points (origin bottom left of the primary
    /// screen, y up).
    QRectF frame;
    /// 0 for ordinary windows and dialogs; others (docks, menus, notifications) have one of their own.
    int layer = 0;
    double alpha = 1;
    /// Whether this program made it.
    bool isOwn = false;
    friend bool operator==(const WindowInfo&, const WindowInfo&) = default;
};

/// The windows of the desktop. Any thread.
class WindowList {
public:
    virtual ~WindowList() = default;
    /// What is on the screen, front to back; the desktop's own background window is left out.
    virtual QList<WindowInfo> windows() const = 0;
    /// Where that window is now; nothing when it is gone.
    virtual std::optional<QRectF> liveFrame(std::uint32_t windowID) const = 0;
};

} // namespace keldra
