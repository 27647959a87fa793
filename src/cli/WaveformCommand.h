#pragma once

#include "cli/Arguments.h"
#include "cli/CommandContext.h"

#include <QCoroTask>

namespace keldra {

/// keldra waveform FILE [--buckets N]: the heights of a file's sound for a timeline, as JSON. Empty for a file without
/// sound.
QCoro::Task<Result<void>> runWaveform(const CommandContext& context, QStringList words);

} // namespace keldra
