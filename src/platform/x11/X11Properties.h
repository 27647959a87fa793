#pragma once

#include "platform/x11/X11Connection.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace keldra {

/// Asks for a whole window property of any type.
xcb_get_property_cookie_t askProperty(const X11Connection& connection, xcb_window_t window, xcb_atom_t property);

/// The 32-bit numbers of a property; empty when there is none of that kind.
std::vector<std::uint32_t> readNumbers(const X11Connection& connection, xcb_get_property_cookie_t request);

/// The text of a property, in the encoding that its type tells.
QString readText(const X11Connection& connection, xcb_get_property_cookie_t request);

/// The class part of WM_CLASS, else its instance part.
QString readClass(const X11Connection& connection, xcb_get_property_cookie_t request);

} // namespace keldra
