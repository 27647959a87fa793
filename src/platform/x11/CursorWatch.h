#pragma once

#include "platform/x11/CursorImage.h"
#include "platform/x11/X11Connection.h"

#include <QPoint>

#include <optional>

namespace keldra {

/// Where the pointer is and what it looks like. One thread, that of its connection's events.
class CursorWatch {
public:
    explicit CursorWatch(const X11Connection& connection);

    /// Whether the event tells of another shape.
    bool handle(const xcb_generic_event_t& event);
    /// Root pixels; nothing while the pointer is on another screen.
    std::optional<QPoint> position() const;
    const CursorImage& image();

private:
    const X11Connection& m_connection;
    CursorImage m_image;
    bool m_isImageStale = true;
};

} // namespace keldra
