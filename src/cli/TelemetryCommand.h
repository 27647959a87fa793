#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra telemetry --show: the body that one of each usage event would send, byte for byte, on standard output, and
/// the request around it on standard error. Nothing is sent.
QCoro::Task<Result<void>> runTelemetry(const CommandContext& context, QStringList words);

} // namespace keldra
