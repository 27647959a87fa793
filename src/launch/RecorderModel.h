#pragma once

#include "app/AppModel.h"

#include <memory>

namespace keldra {

/// What a recorder is made from; all that is borrowed lives longer.
struct RecorderModelParts {
    Platform platform;
    Application& application;
    Telemetry& telemetry;
    Scheduler& scheduler;
    Executor& mainQueue;
};

/// A model with everything that stands behind it: camera, levels, pointer effects, preferences of its own, the recorder
/// and its queues. All of that goes with it.
std::shared_ptr<AppModel> makeRecorderModel(RecorderModelParts parts);

} // namespace keldra
