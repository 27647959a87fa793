#pragma once

#include "base/Result.h"
#include "media/SoundAddition.h"

#include <string>

namespace keldra {

/// Replaces the movie by one with sound added to its first sound track, or as the only one; nothing is encoded again.
/// It is whole at any moment: when this fails it stands as before. Blocks while it copies.
[[nodiscard]] Result<void> addSoundToMovie(const std::string& path, const std::string& temporaryPath,
                                           const SoundAddition& addition);

} // namespace keldra
