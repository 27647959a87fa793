#include "ui_kit/X11Session.h"

#include <QGuiApplication>

#include <cstring>

namespace keldra::x11 {
namespace {

/// In units of four bytes: more than any list of states or monitors needs.
constexpr std::uint32_t maximumLength = 4096;

} // namespace

xcb_connection_t* connection() {
    const auto* application = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return application ? application->connection() : nullptr;
}

xcb_window_t root() {
    return xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
}

xcb_atom_t atom(const char* name) {
    const Ptr<xcb_intern_atom_reply_t> answer(xcb_intern_atom_reply(
        connection(), xcb_intern_atom(connection(), 0, std::uint16_t(std::strlen(name)), name), nullptr));
    return answer ? answer->atom : xcb_atom_t(XCB_ATOM_NONE);
}

std::vector<std::uint32_t> numbers(xcb_window_t window, const char* property) {
    const Ptr<xcb_get_property_reply_t> answer(xcb_get_property_reply(
        connection(),
        xcb_get_property(connection(), 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, maximumLength),
        nullptr));
    if (!answer || answer->format != 32)
        return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
    return {first, first + answer->value_len};
}

bool hasExtension(xcb_extension_t& extension) {
    const xcb_query_extension_reply_t* answer = xcb_get_extension_data(connection(), &extension);
    return answer != nullptr && answer->present;
}

} // namespace keldra::x11
