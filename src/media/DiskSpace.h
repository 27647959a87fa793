#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace keldra {

/// The limits of free space that a recording keeps, in bytes. They are few and fixed, so that what the user is told is
/// the same everywhere.
namespace diskSpace {

/// Below this no recording starts: a minute or more of a busy screen beside what must stay free.
inline constexpr std::int64_t neededToStart = 256LL << 20;
/// Below this a recording ends as a stop does. Enough for the seconds that may come between two looks at a slow disk (a
/// 4K screen at the highest quality with sound writes 6 MB a second), for the last fragment, and for the programs
/// beside us, which fare badly on a disk that is full to the last byte.
inline constexpr std::int64_t keptWhileRecording = 64LL << 20;
/// What must be left beside the finished copy while it and the growing file both exist.
inline constexpr std::int64_t keptWhileFinishing = 16LL << 20;

} // namespace diskSpace

/// What this user may still write on the disk of a folder. Nothing where the file system cannot tell: then only a write
/// that fails does.
std::optional<std::int64_t> freeBytesIn(const std::string& folder);
/// The same on the disk of an open file.
std::optional<std::int64_t> freeBytesBeside(int descriptor);

/// Whether a finished copy of a growing file of that size has room beside it.
bool hasRoomForCopy(std::int64_t fileBytes, std::optional<std::int64_t> freeBytes);

} // namespace keldra
