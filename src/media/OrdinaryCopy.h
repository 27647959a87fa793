#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "media/MovieInput.h"
#include "media/MovieMuxer.h"
#include "media/OutputFile.h"

#include <string>

namespace keldra {

/// Makes an ordinary movie of a growing one without looking at its pictures and sound: the muxer is told where each
/// packet goes and how long it is, and writes what stands around them; the packets themselves are copied by the kernel,
/// range by range, in the order in which they lie in the source. Where the file system shares what is copied this costs
/// neither time nor room.
///
/// `muxer` writes to `target`, has the source's tracks and has begun. Its last video packets are lengthened up to
/// `end`, on the file's line; an `end` that is not numeric, or not after the last picture, leaves them as they are. The
/// muxer is finished then.
[[nodiscard]] Result<void> copyPackets(MovieInput& input, const std::string& source, MovieMuxer& muxer,
                                       OutputFile& target, MediaTime end);

} // namespace keldra
