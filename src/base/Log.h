#pragma once

#include "base/Error.h"

#include <string_view>

namespace keldra {

/// Where log lines go. The desktop agent keeps standard output; the command line, whose standard output belongs to its
/// results, turns them to standard error.
enum class LogStream { standardOutput, standardError };
void setLogStream(LogStream stream);

/// Writes one line with its bracketed prefix, e.g. logLine("[KELDRA Mic]", "..."). Any thread; lines never mix.
void logLine(std::string_view prefix, std::string_view text);

/// "[KELDRA] <operation> failed: domain=<domain> code=<code> info=<info>"
void logFailure(std::string_view operation, const Error& error);

} // namespace keldra
