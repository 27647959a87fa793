#pragma once

#include "app/AppModel.h"
#include "launch/RecorderWindows.h"

#include <memory>

namespace keldra {

/// The panels and overlays of the recorder on this desktop. What is borrowed lives longer.
std::unique_ptr<RecorderWindows> makeCaptureWindows(AppModel& model, const Platform& platform, Scheduler& scheduler,
                                                    Executor& mainQueue);

} // namespace keldra
