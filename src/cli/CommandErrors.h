#pragma once

#include "base/Error.h"

namespace keldra {

/// Ctrl-C or SIGTERM before there was anything to keep; exit status 130.
Error interruptedError();
/// Standard output does not take the result.
Error unwritableOutput();
/// 1 failed, 2 wrong usage, 130 interrupted.
int exitStatus(const Error& error);

} // namespace keldra
