#pragma once

#include "launch/AgentRequest.h"
#include "services/Telemetry.h"

namespace keldra {

/// Runs the desktop agent to its end; answers the exit status. What keeps it from starting is told on standard error,
/// in one line. Nothing of Qt is there yet.
int runAgent(int& argc, char** argv, const AgentRequest& request, AnalyticsAccount account);

} // namespace keldra
