#pragma once

#include "base/Error.h"

#include <string>

namespace keldra {

/// What goes wrong in media beside what the system or libav say in their own words.
enum class MediaError {
    notAMovie = 1,
    noSuchTrack,
    noDecoder,
    noEncoder,
    invalidRange,
    overlappingRange,
    noPicture,
    outsideTheTimeline,
    invalidSettings,
    cancelled,
    fileRemoved,
};

inline Error mediaError(MediaError code, std::string message) {
    return Error{"KELDRA.Media", static_cast<int>(code), std::move(message), {}};
}

/// The last part of a path, the name by which messages speak of a file.
inline std::string fileNameOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
}

} // namespace keldra
