#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "platform/Platform.h"

#include <memory>

namespace keldra {

/// The adapters of the desktop that this session runs on, at one pixel a point. `mainQueue` must outlive them.
/// Errors: no display, or a kind of session that cannot be recorded, with what to do about it.
[[nodiscard]] Result<Platform> makeDesktopPlatform(std::shared_ptr<HostClock> clock, Executor& mainQueue);

} // namespace keldra
