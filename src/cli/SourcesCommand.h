#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra sources [--json]: what can be recorded, as a table or as JSON.
QCoro::Task<Result<void>> runSources(const CommandContext& context, QStringList words);

} // namespace keldra
