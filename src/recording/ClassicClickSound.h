#pragma once

#include "base/Result.h"

#include <vector>

namespace keldra {

/// The samples of our click sound file, one channel at 48 kHz, as they are. Blocks while it reads.
[[nodiscard]] Result<std::vector<float>> readClassicClickSound();

} // namespace keldra
