#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra export INPUT --output F.mp4 [--canvas STYLE.json] [--quiet]: the finished movie.
QCoro::Task<Result<void>> runExport(const CommandContext& context, QStringList words);

} // namespace keldra
