#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "platform/Platform.h"

#include <memory>

namespace keldra {

/// The desktop that DISPLAY names. `mainQueue` must outlive all that the platform gives; `scaleFactor` is pixels per
/// point. Errors: one line that says what to do.
Result<Platform> makeX11Platform(std::shared_ptr<HostClock> clock, Executor& mainQueue, double scaleFactor);

} // namespace keldra
