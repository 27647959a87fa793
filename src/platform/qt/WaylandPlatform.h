#pragma once

#include "platform/Platform.h"

#include <memory>

namespace keldra {

/// A Wayland session: its screens, as far as it tells of them, and the pointer over windows of ours. It tells of no
/// windows of others; what it lets record comes from elsewhere. Main thread, with a QGuiApplication.
Platform makeWaylandPlatform(std::shared_ptr<HostClock> clock);

} // namespace keldra
