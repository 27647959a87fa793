#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>
#include <xcb/xcb.h>

namespace keldra::x11 {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Ptr = std::unique_ptr<T, Free>;

/// Qt's own connection to the X server; null on other desktops. Main thread.
xcb_connection_t* connection();
xcb_window_t root();
xcb_atom_t atom(const char* name);
/// The 32-bit numbers of a window's property; empty when there is none.
std::vector<std::uint32_t> numbers(xcb_window_t window, const char* property);
bool hasExtension(xcb_extension_t& extension);

} // namespace keldra::x11
