#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "media/OutputFile.h"
#include "media/SoundAddition.h"

#include <string>

namespace keldra {

/// Copies the packets of the movie at `source` into an ordinary QuickTime movie whose index stands at its head. The
/// last picture of each video track is lengthened up to `end`, on the file's line; an `end` that is not numeric, or not
/// after the last picture, leaves it as it is. `displayName` is how messages call the source.
[[nodiscard]] Result<void> remuxIntoOrdinaryMovie(const std::string& source, const std::string& displayName,
                                                  OutputFile& target, MediaTime end);

/// The same with sound added to the first sound track, or as the only one where there is none; pictures and all other
/// sound stay as they are to the bit. Errors: also a first sound track that is not PCM at 48 kHz.
[[nodiscard]] Result<void> remuxAddingSound(const std::string& source, const std::string& displayName,
                                            OutputFile& target, const SoundAddition& addition);

} // namespace keldra
