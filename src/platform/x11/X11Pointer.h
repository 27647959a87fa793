#pragma once

#include "imaging/Geometry.h"
#include "platform/Pointer.h"
#include "platform/x11/X11Connection.h"

#include <chrono>
#include <memory>

namespace keldra {

/// The pointer on a connection of its own, whose events are the presses that a poll would miss.
class X11Pointer final : public Pointer {
public:
    /// `scaleFactor`: pixels per point. The connection must have no other reader of its events.
    X11Pointer(std::shared_ptr<X11Connection> connection, double scaleFactor);
    QPointF location() override;
    unsigned takePressedButtons() override;

private:
    void query();
    void readEvents();
    void findPrimary();
    void note(const xcb_generic_event_t& event);

    std::shared_ptr<X11Connection> m_connection;
    double m_scaleFactor;
    /// Of the last query, and when it came.
    XcbPtr<xcb_query_pointer_reply_t> m_answer;
    std::chrono::steady_clock::time_point m_answeredAt;
    QPointF m_location;
    /// Of the primary monitor, root pixels, and when it is asked for again: servers do not announce every change.
    PixelRect m_primary;
    std::chrono::steady_clock::time_point m_primaryAskedAgainAt;
    /// Buttons that the events say are down, and all that were pressed since the last call.
    unsigned m_down = 0;
    unsigned m_latched = 0;
};

} // namespace keldra
