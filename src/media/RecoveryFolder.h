#pragma once

#include "media/OutputFile.h"

#include <string>

namespace keldra {

/// Moves a take that ended in an error out of the folder where only whole ones belong, without copying it: into
/// `folder`, which is made where it is missing; where that cannot be, because it lies on another disk, to the hidden
/// name ".recovered-<name>" beside. No file is replaced: a name that is taken gets a number. Answers where the file is
/// now; its own name where it could not be moved at all. What happened goes to the log.
std::string putAside(OutputFile& file, const std::string& folder);

} // namespace keldra
