#pragma once

#include "platform/Platform.h"

#include <memory>

namespace keldra {

<<<<<<< HEAD
/// A Wayland session: its screens, as far as it tells of them, and the pointer over windows of ours. It tells of no
/// windows of others; what it lets record comes from elsewhere. Main thread, with a QGuiApplication.
Platform makeWaylandPlatform(std::shared_ptr<HostClock> clock);
=======
/// A Wayland session: its screens, as far as it tells of them, and our own windows' work. It tells of no windows, and
/// of the pointer only over windows of ours; nothing of it can be recorded. Main thread, with a QGuiApplication;
/// `mainQueue` must outlive all that the platform gives.
Platform makeWaylandPlatform(std::shared_ptr<HostClock> clock, Executor& mainQueue);
>>>>>>> desktop

} // namespace keldra
