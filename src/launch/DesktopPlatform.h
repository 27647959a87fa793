#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "platform/Platform.h"

#include <memory>

namespace keldra {

/// WAYLAND_DISPLAY is set, or the login manager says so, even where there is an X server too.
bool isWaylandSession();

/// The adapters of the desktop that this session runs on, for commands without windows, at one pixel a point.
/// `mainQueue` must outlive them.
/// Errors: no display, or a kind of session that cannot be recorded, with what to do about it.
[[nodiscard]] Result<Platform> makeDesktopPlatform(std::shared_ptr<HostClock> clock, Executor& mainQueue);

/// The adapters for the agent, which needs a QApplication; those of a Wayland session do what it allows. `scaleFactor`
/// is pixels per point on X11. Scheduler and `mainQueue` must outlive them.
[[nodiscard]] Result<Platform> makeAgentPlatform(std::shared_ptr<HostClock> clock, Scheduler& scheduler,
                                                 Executor& mainQueue, double scaleFactor);

} // namespace keldra
