#include "media/MovieSound.h"

#include "media/MediaError.h"
#include "media/OutputFile.h"
#include "media/Remux.h"

namespace keldra {

Result<void> addSoundToMovie(const std::string& path, const std::string& temporaryPath, const SoundAddition& addition) {
    return replaceFile(path, temporaryPath,
                       [&](OutputFile& movie) { return remuxAddingSound(path, fileNameOf(path), movie, addition); });
}

} // namespace keldra
