#include "media/RecoveryFolder.h"

#include "base/Log.h"
#include "media/MediaError.h"

#include <cerrno>
#include <filesystem>

namespace keldra {
namespace {

namespace fs = std::filesystem;

Result<void> makeFolder(const std::string& folder) {
    std::error_code error;
    if (!fs::create_directories(folder, error))
        return error ? Result<void>(fail(systemError(error.value(), folder))) : Result<void>();
    // Recordings are nobody else's business.
    fs::permissions(folder, fs::perms::owner_all, error);
    return {};
}

/// "take.mov", "take-2.mov", "take-3.mov", ...
std::string numbered(const std::string& path, int number) {
    if (number == 1)
        return path;
    const fs::path whole(path);
    return (whole.parent_path() / whole.stem()).string() + "-" + std::to_string(number) + whole.extension().string();
}

Result<void> renameToFreeName(OutputFile& file, const std::string& path) {
    constexpr int attempts = 1000;
    for (int number = 1;; ++number) {
        const auto renamed = file.renameToFreeName(numbered(path, number));
        if (renamed || renamed.error().code != EEXIST || number == attempts)
            return renamed;
    }
}

Result<void> moveInto(OutputFile& file, const std::string& folder) {
    TRY(makeFolder(folder));
    return renameToFreeName(file, folder + "/" + fileNameOf(file.path()));
}

} // namespace

std::string putAside(OutputFile& file, const std::string& folder) {
    auto moved = moveInto(file, folder);
    if (!moved) {
        if (moved.error().code != EXDEV)
            logFailure("moving a recording into " + folder, moved.error());
        moved = renameToFreeName(file, folderOf(file.path()) + "/.recovered-" + fileNameOf(file.path()));
    }
    if (!moved)
        logFailure("moving a recording out of its folder", moved.error());
    logLine("[KELDRA]", "what was recorded is kept: " + file.path());
    return file.path();
}

} // namespace keldra
