#pragma once

#include "cli/CommandContext.h"

#include <QCoroTask>
#include <QStringList>

namespace keldra {

/// Whether these words (without the program's name) are for the command line, not for the desktop agent.
bool isCommandLine(const QStringList& words);

/// Runs a subcommand, --help or --version; answers with the exit status. Failures are told on standard error in one
/// line. Main thread, with Qt's loop running.
QCoro::Task<int> runCommandLine(const CommandContext& context, QStringList words);

} // namespace keldra
