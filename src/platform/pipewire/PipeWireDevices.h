#pragma once

#include "base/Executor.h"
#include "platform/Platform.h"

namespace keldra {

/// Adds this session's cameras and microphones. `mainQueue` must outlive all that the platform gives.
void addPipeWireDevices(Platform& platform, Executor& mainQueue);

} // namespace keldra
