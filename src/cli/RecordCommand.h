#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra record: records a display, a window or an area until the time is over, Ctrl-C or SIGTERM, and prints the
/// file's path. An interruption before the first frame answers with interruptedError().
QCoro::Task<Result<void>> runRecord(const CommandContext& context, QStringList words);

} // namespace keldra
