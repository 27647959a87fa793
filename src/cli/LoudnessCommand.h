#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra loudness FILE [--start S] [--duration D]: how loud a span is, and the gain that would make it even, as JSON.
/// A file without sound is an error.
QCoro::Task<Result<void>> runLoudness(const CommandContext& context, QStringList words);

} // namespace keldra
