#pragma once

#include "base/Result.h"
#include "recording/ClickSoundStyle.h"

#include <string>
#include <vector>

namespace keldra {

/// Puts clicks into a finished movie, at these seconds of it: into its first sound track, or as its only one. Times
/// outside the movie are left out; without any other the file is not touched. Blocks while it copies; a failure leaves
/// the file as it is.
[[nodiscard]] Result<void> mixClicksIntoMovie(const std::string& path, std::vector<double> times,
                                              ClickSoundStyle style);

} // namespace keldra
