#pragma once

#include "app/AppModel.h"
#include "launch/RecorderWindows.h"

#include <memory>

namespace keldra {

/// The panels and overlays of the recorder on this desktop. Model and `mainQueue` live longer.
std::unique_ptr<RecorderWindows> makeCaptureWindows(AppModel& model, const Platform& platform, Executor& mainQueue);

} // namespace keldra
