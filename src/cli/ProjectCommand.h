#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra project INPUT: the project that the editor would open, as JSON.
QCoro::Task<Result<void>> runProject(const CommandContext& context, QStringList words);

} // namespace keldra
