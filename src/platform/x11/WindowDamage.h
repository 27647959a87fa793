#pragma once

#include "platform/x11/X11Connection.h"

#include <xcb/damage.h>

namespace keldra {

/// Watches one window, its inferiors included, for drawing. After a change it is silent until reset().
class WindowDamage {
public:
    WindowDamage(const X11Connection& connection, xcb_window_t window)
        : m_connection(connection), m_damage(connection.newID()) {
        const auto request = xcb_damage_create(connection.raw(), m_damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        m_resetSequence = request.sequence;
    }
    /// A server that already dropped it with its window answers with an error event, which nobody needs.
    ~WindowDamage() { xcb_damage_destroy(m_connection.raw(), m_damage); }
    WindowDamage(const WindowDamage&) = delete;
    WindowDamage& operator=(const WindowDamage&) = delete;

    /// Whether the event tells of drawing here since the last reset; reports that were under way then do not count.
    bool isReportedBy(const xcb_generic_event_t& event) const {
        return m_connection.extensions().damage.isEvent(event, XCB_DAMAGE_NOTIFY) &&
               reinterpret_cast<const xcb_damage_notify_event_t&>(event).damage == m_damage &&
               std::int32_t(event.full_sequence - m_resetSequence) >= 0;
    }
    /// What is drawn from here on is reported again. What was drawn until here goes into `changed`, an XFixes region,
    /// if there is one.
    void reset(std::uint32_t changed = 0) {
        m_resetSequence = xcb_damage_subtract(m_connection.raw(), m_damage, 0, changed).sequence;
    }

private:
    const X11Connection& m_connection;
    xcb_damage_damage_t m_damage;
    std::uint32_t m_resetSequence;
};

} // namespace keldra
