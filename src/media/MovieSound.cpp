#include "media/MovieSound.h"

#include "media/MediaError.h"
#include "media/OutputFile.h"
#include "media/Remux.h"

namespace keldra {

Result<void> addSoundToMovie(const std::string& path, const std::string& temporaryPath, const SoundAddition& addition) {
    TRY_LET(const auto movie, OutputFile::create(temporaryPath, OutputFile::Access::rewritable));
    const auto make = [&]() -> Result<void> {
        TRY(remuxAddingSound(path, fileNameOf(path), *movie, addition));
        TRY(movie->sync());
        return movie->renameTo(path);
    };
    Result<void> made = make();
    if (!made && movie->path() != path)
        movie->remove();
    return made;
}

} // namespace keldra
