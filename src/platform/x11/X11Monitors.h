#pragma once

#include "imaging/Geometry.h"
#include "platform/x11/X11Connection.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace keldra {

struct X11Monitor {
    std::string name;
    /// Root pixels.
    PixelRect rect;
    friend bool operator==(const X11Monitor&, const X11Monitor&) = default;
};

/// The active monitors, the primary first; the whole root window where the server knows none. Empty when the server
/// does not answer.
std::vector<X11Monitor> readMonitors(const X11Connection& connection);

/// Gives every monitor name a number at first sight, from 1, for the rest of the run. Any thread.
class MonitorNumbers {
public:
    std::uint32_t numberOf(const std::string& name);

private:
    std::mutex m_lock;
    std::map<std::string, std::uint32_t> m_numbers;
};

} // namespace keldra
