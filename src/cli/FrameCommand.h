#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra frame INPUT --at SECONDS --output F.png: one composed frame. A time past the end is an error.
QCoro::Task<Result<void>> runFrame(const CommandContext& context, QStringList words);

} // namespace keldra
