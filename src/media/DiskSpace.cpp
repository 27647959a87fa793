#include "media/DiskSpace.h"

#include <sys/statvfs.h>

namespace keldra {
namespace {

std::optional<std::int64_t> freeBytes(int answer, const struct statvfs& status) {
    // Some file systems in user space say that they have no blocks at all.
    if (answer != 0 || status.f_blocks == 0)
        return std::nullopt;
    return std::int64_t(status.f_bavail) * std::int64_t(status.f_frsize);
}

} // namespace

std::optional<std::int64_t> freeBytesIn(const std::string& folder) {
    struct statvfs status {};
    return freeBytes(::statvfs(folder.c_str(), &status), status);
}

std::optional<std::int64_t> freeBytesBeside(int descriptor) {
    struct statvfs status {};
    return freeBytes(::fstatvfs(descriptor, &status), status);
}

bool hasRoomForCopy(std::int64_t fileBytes, std::optional<std::int64_t> freeBytes) {
    // The index takes up to 36 bytes a packet; no mix of packets makes that a sixteenth.
    const std::int64_t needed = fileBytes + fileBytes / 16 + diskSpace::keptWhileFinishing;
    return !freeBytes || *freeBytes >= needed;
}

} // namespace keldra
