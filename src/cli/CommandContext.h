#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"
#include "base/HostClock.h"
#include "base/Result.h"
#include "platform/Platform.h"
#include "services/Telemetry.h"

#include <functional>
#include <memory>

namespace keldra {

/// What a subcommand may use of the program.
struct CommandContext {
    std::shared_ptr<HostClock> clock;
    std::shared_ptr<Scheduler> scheduler;
    Executor& mainQueue;
    /// Opens the desktop; only the commands that record or list need one.
    std::function<Result<Platform>()> makePlatform;
    Application& application;
    /// Where the agent sends usage events, for those who ask.
    AnalyticsAccount analytics;
};

} // namespace keldra
