#include "platform/x11/X11Pointer.h"

#include "platform/x11/DesktopSpace.h"
#include "platform/x11/X11Monitors.h"

#include <xcb/randr.h>
#include <xcb/xinput.h>

namespace keldra {
namespace {

constexpr std::chrono::milliseconds answerIsNewFor{1};

/// The bit of a button that is pressed by a finger; none for 4 to 7, which are the directions of a wheel.
unsigned bitOf(std::uint32_t button) {
    const bool isWheel = button >= 4 && button <= 7;
    return button >= 1 && button <= 32 && !isWheel ? 1U << (button - 1) : 0;
}

void selectRawButtons(const X11Connection& x) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    xcb_input_xi_select_events(x.raw(), x.root(), 1, &mask.head);
}

} // namespace

X11Pointer::X11Pointer(std::shared_ptr<X11Connection> connection, double scaleFactor)
    : m_connection(std::move(connection)), m_scaleFactor(scaleFactor) {
    if (m_connection->extensions().input.isPresent)
        selectRawButtons(*m_connection);
    if (m_connection->extensions().randr.isPresent)
        xcb_randr_select_input(m_connection->raw(), m_connection->root(), XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE);
    xcb_flush(m_connection->raw());
}

void X11Pointer::query() {
    const X11Connection& x = *m_connection;
    m_answer = x.reply(xcb_query_pointer_reply, xcb_query_pointer(x.raw(), x.root()));
    // The answer comes after all events up to it.
    readEvents();
    m_answeredAt = std::chrono::steady_clock::now();
}

QPointF X11Pointer::location() {
    query();
    findPrimary();
    if (m_answer && m_answer->same_screen)
        // The upper left corner of the pixel that it points at.
        m_location =
            DesktopSpace{m_scaleFactor, m_primary}.toPoints({m_answer->root_x, m_answer->root_y, 0, 0}).topLeft();
    return m_location;
}

void X11Pointer::findPrimary() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_primaryAskedAgainAt)
        return;
    m_primaryAskedAgainAt = now + std::chrono::seconds(1);
    if (const std::vector<X11Monitor> monitors = readMonitors(*m_connection); !monitors.empty())
        m_primary = monitors.front().rect;
}

unsigned X11Pointer::takePressedButtons() {
    // Whoever asks for place and buttons at once asks the server once.
    if (std::chrono::steady_clock::now() - m_answeredAt > answerIsNewFor)
        query();
    unsigned down = m_down;
    if (m_answer) {
        // The server's word on the first three: a release may have been for somebody else's eyes only.
        constexpr unsigned firstThree = 7;
        const unsigned mask = m_answer->mask >> 8;
        down = (down & ~firstThree) | (mask & firstThree);
    }
    const unsigned pressed = down | m_latched;
    m_latched = 0;
    return pressed;
}

void X11Pointer::readEvents() {
    while (const XcbPtr<xcb_generic_event_t> event{xcb_poll_for_queued_event(m_connection->raw())})
        note(*event);
}

void X11Pointer::note(const xcb_generic_event_t& event) {
    if (m_connection->extensions().randr.isEvent(event, XCB_RANDR_SCREEN_CHANGE_NOTIFY))
        m_primaryAskedAgainAt = {};
    if ((event.response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto& raw = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event);
    if (raw.extension != m_connection->extensions().input.majorOpcode)
        return;
    if (raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS) {
        m_down |= bitOf(raw.detail);
        m_latched |= bitOf(raw.detail);
    } else if (raw.event_type == XCB_INPUT_RAW_BUTTON_RELEASE) {
        m_down &= ~bitOf(raw.detail);
    }
}

} // namespace keldra
