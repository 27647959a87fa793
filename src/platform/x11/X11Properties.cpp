#include "platform/x11/X11Properties.h"

#include <QByteArray>

namespace keldra {
namespace {

/// In units of four bytes: more than any title, list of windows or icon-free property needs.
constexpr std::uint32_t maximumLength = 1 << 16;

QByteArray bytesOf(const xcb_get_property_reply_t* property) {
    if (property == nullptr || property->format != 8)
        return {};
    return QByteArray(static_cast<const char*>(xcb_get_property_value(property)),
                      xcb_get_property_value_length(property));
}

} // namespace

xcb_get_property_cookie_t askProperty(const X11Connection& connection, xcb_window_t window, xcb_atom_t property) {
    return xcb_get_property(connection.raw(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, maximumLength);
}

std::vector<std::uint32_t> readNumbers(const X11Connection& connection, xcb_get_property_cookie_t request) {
    const auto property = connection.reply(xcb_get_property_reply, request);
    if (!property || property->format != 32)
        return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(property.get()));
    return {first, first + property->value_len};
}

QString readText(const X11Connection& connection, xcb_get_property_cookie_t request) {
    const auto property = connection.reply(xcb_get_property_reply, request);
    const QByteArray bytes = bytesOf(property.get());
    if (bytes.isEmpty())
        return {};
    const QString text = property->type == XCB_ATOM_STRING ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
    return text.section(QChar(u'\0'), 0, 0);
}

QString readClass(const X11Connection& connection, xcb_get_property_cookie_t request) {
    const auto property = connection.reply(xcb_get_property_reply, request);
    const QList<QByteArray> parts = bytesOf(property.get()).split('\0');
    const QByteArray instance = parts.value(0);
    const QByteArray className = parts.value(1);
    return QString::fromUtf8(className.isEmpty() ? instance : className);
}

} // namespace keldra
