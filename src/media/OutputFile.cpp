#include "media/OutputFile.h"

#include "base/Log.h"
#include "media/DiskSpace.h"
#include "media/MediaError.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace keldra {
namespace {

Result<void> syncFolderAt(const std::string& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return fail(systemError(errno, folder));
    const int answer = ::fsync(descriptor);
    const int reason = errno;
    ::close(descriptor);
    // Some file systems have nothing to sync in a folder.
    if (answer != 0 && reason != EINVAL)
        return fail(systemError(reason, folder));
    return {};
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

} // namespace

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

Result<std::unique_ptr<OutputFile>> OutputFile::create(const std::string& path, Access access) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return fail(systemError(errno, fileNameOf(path)));
    return wrap(descriptor, path, access);
}

Result<std::unique_ptr<OutputFile>> OutputFile::createUnnamed(const std::string& path) {
    const int descriptor = ::open(folderOf(path).c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return create(path, Access::rewritable);
    auto file = wrap(descriptor, path, Access::rewritable);
    file->m_isUnnamed = true;
    return file;
}

std::unique_ptr<OutputFile> OutputFile::wrap(int descriptor, const std::string& path, Access access) {
    std::unique_ptr<OutputFile> file(new OutputFile(descriptor, path));
    // Tells others that the file still grows. Where a file system has no locks nobody else looks for one either.
    (void)::flock(descriptor, LOCK_EX | LOCK_NB);

    constexpr int bufferBytes = 1 << 17;
    const bool isRewritable = access == Access::rewritable;
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    file->m_io = avio_alloc_context(buffer, bufferBytes, 1, file.get(), isRewritable ? readBytes : nullptr, writeBytes,
                                    isRewritable ? seekTo : nullptr);
    file->m_io->seekable = isRewritable ? AVIO_SEEKABLE_NORMAL : 0;
    return file;
}

OutputFile::OutputFile(int descriptor, std::string path) : m_descriptor(descriptor), m_path(std::move(path)) {}

OutputFile::~OutputFile() {
    if (m_io != nullptr)
        av_freep(&m_io->buffer);
    avio_context_free(&m_io);
    ::close(m_descriptor);
}

int OutputFile::writeBytes(void* self, std::uint8_t* bytes, int count) {
    auto& file = *static_cast<OutputFile*>(self);
    if (file.m_isLeftOut)
        return ::lseek(file.m_descriptor, count, SEEK_CUR) < 0 ? AVERROR(errno) : count;
    for (int written = 0; written < count;) {
        const ssize_t answer = ::write(file.m_descriptor, bytes + written, std::size_t(count - written));
        if (answer < 0 && errno == EINTR)
            continue;
        if (answer < 0) {
            if (file.m_errno == 0)
                file.m_errno = errno;
            return AVERROR(file.m_errno);
        }
        written += int(answer);
    }
    return count;
}

int OutputFile::readBytes(void* self, std::uint8_t* bytes, int count) {
    const ssize_t answer = ::read(static_cast<OutputFile*>(self)->m_descriptor, bytes, std::size_t(count));
    return answer < 0 ? AVERROR(errno) : answer == 0 ? AVERROR_EOF : int(answer);
}

std::int64_t OutputFile::seekTo(void* self, std::int64_t offset, int whence) {
    const auto& file = *static_cast<OutputFile*>(self);
    if (whence == AVSEEK_SIZE)
        return file.size();
    const off_t answer = ::lseek(file.m_descriptor, offset, whence & ~AVSEEK_FORCE);
    return answer < 0 ? AVERROR(errno) : answer;
}

std::int64_t OutputFile::size() const {
    struct stat status {};
    return ::fstat(m_descriptor, &status) == 0 ? std::int64_t(status.st_size) : 0;
}

Result<void> OutputFile::flush() {
    avio_flush(m_io);
    if (m_errno != 0)
        return fail(systemError(m_errno, fileNameOf(m_path)));
    if (m_io->error < 0)
        return fail(libavError(m_io->error, fileNameOf(m_path)));
    return {};
}

std::int64_t OutputFile::position() const {
    return avio_tell(m_io);
}

Result<void> OutputFile::leaveOut(bool isLeftOut) {
    TRY(flush());
    m_isLeftOut = isLeftOut;
    return {};
}

Result<void> OutputFile::copyFrom(int source, std::int64_t sourceOffset, std::int64_t count, std::int64_t offset) {
    std::vector<char> buffer;
    const std::int64_t begin = offset;
    while (count > 0) {
        ssize_t copied = -1;
        if (buffer.empty()) {
            off_t from = sourceOffset;
            off_t to = offset;
            copied = ::copy_file_range(source, &from, m_descriptor, &to, std::size_t(count), 0);
            // Not everywhere, and not between all disks: then as everybody does it.
            if (copied < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP)) {
                buffer.resize(1 << 20);
                continue;
            }
        } else {
            copied = ::pread(source, buffer.data(), std::min(buffer.size(), std::size_t(count)), sourceOffset);
            if (copied > 0)
                copied = ::pwrite(m_descriptor, buffer.data(), std::size_t(copied), offset);
        }
        if (copied < 0 && errno == EINTR)
            continue;
        if (copied < 0)
            return fail(systemError(errno, fileNameOf(m_path)));
        if (copied == 0)
            return fail(systemError(ENODATA, fileNameOf(m_path)));
        sourceOffset += copied;
        offset += copied;
        count -= copied;
    }
    // The disk begins at once, while more is copied. Only a wish: sync() is what counts.
    (void)::sync_file_range(m_descriptor, begin, offset - begin, SYNC_FILE_RANGE_WRITE);
    return {};
}

Result<void> OutputFile::sync() {
    if (::fsync(m_descriptor) != 0)
        return fail(systemError(errno, fileNameOf(m_path)));
    return {};
}

void OutputFile::truncate(std::int64_t size) {
    // Only tidies up: a torn end is skipped by every reader.
    (void)!::ftruncate(m_descriptor, size);
}

std::string OutputFile::pathOfDescriptor() const {
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

Result<void> OutputFile::syncData() const {
    int answer = 0;
    do
        answer = ::fdatasync(m_descriptor);
    while (answer != 0 && errno == EINTR);
    if (answer != 0)
        return fail(systemError(errno, fileNameOf(m_path)));
    return {};
}

Result<void> OutputFile::syncFolder() const {
    return syncFolderAt(folderOf(m_path));
}

Result<void> OutputFile::checkName() const {
    struct stat ours {};
    struct stat named {};
    const bool isLinked = ::fstat(m_descriptor, &ours) != 0 || ours.st_nlink > 0;
    // Another failure, say of a network, tells nothing about the name.
    const bool isNamed =
        ::lstat(m_path.c_str(), &named) == 0 ? isSameFile(ours, named) : errno != ENOENT && errno != ENOTDIR;
    if (isLinked && isNamed)
        return {};
    return fail(
        mediaError(MediaError::fileRemoved,
                   fileNameOf(m_path) + ": the file was removed or moved, or its folder, while it was recorded"));
}

std::optional<std::int64_t> OutputFile::freeBytes() const {
    return freeBytesBeside(m_descriptor);
}

bool OutputFile::isAt(const std::string& path) const {
    struct stat ours {};
    struct stat named {};
    return ::fstat(m_descriptor, &ours) == 0 && ::lstat(path.c_str(), &named) == 0 && isSameFile(ours, named);
}

std::string OutputFile::currentPath() const {
    std::error_code error;
    const std::string path = std::filesystem::read_symlink(pathOfDescriptor(), error).string();
    return !error && isAt(path) ? path : std::string();
}

void OutputFile::remove() {
    if (isAt(m_path))
        ::unlink(m_path.c_str());
}

Result<void> OutputFile::renameToFreeName(const std::string& path) {
    if (!isAt(m_path))
        return fail(systemError(ENOENT, fileNameOf(m_path)));
    int answer = ::renameat2(AT_FDCWD, m_path.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
    if (answer != 0 && errno == EINVAL) {
        // A file system that cannot do it in one step.
        struct stat taken {};
        errno = EEXIST;
        if (::lstat(path.c_str(), &taken) != 0)
            answer = ::rename(m_path.c_str(), path.c_str());
    }
    if (answer != 0)
        return fail(systemError(errno, fileNameOf(path)));
    const std::string before = std::exchange(m_path, path);
    // It has its new name already; that the disk may not know yet is worth a line.
    for (const std::string& name : {path, before})
        if (const auto synced = syncFolderAt(folderOf(name)); !synced)
            logFailure("bringing a folder to the disk", synced.error());
    return {};
}

Result<void> OutputFile::giveName() {
    if (!m_isUnnamed)
        return {};
    // Nobody can give a file a name that is taken, so it gets one of its own first.
    if (::linkat(AT_FDCWD, pathOfDescriptor().c_str(), AT_FDCWD, m_path.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return fail(systemError(errno, fileNameOf(m_path)));
    m_isUnnamed = false;
    return {};
}

Result<void> OutputFile::renameTo(const std::string& path) {
    TRY(giveName());
    if (::rename(m_path.c_str(), path.c_str()) != 0)
        return fail(systemError(errno, fileNameOf(path)));
    m_path = path;
    return syncFolderAt(folderOf(path));
}

Result<void> replaceFile(const std::string& path, const std::string& temporaryPath,
                         const std::function<Result<void>(OutputFile&)>& write) {
    TRY_LET(const auto file, OutputFile::createUnnamed(temporaryPath));
    const auto make = [&]() -> Result<void> {
        TRY(write(*file));
        TRY(file->sync());
        return file->renameTo(path);
    };
    Result<void> made = make();
    if (!made && file->path() != path)
        file->remove();
    return made;
}

} // namespace keldra
