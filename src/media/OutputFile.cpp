#include "media/OutputFile.h"

#include "media/MediaError.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace keldra {
namespace {

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

Result<void> syncFolder(const std::string& folder) {
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

} // namespace

Result<std::unique_ptr<OutputFile>> OutputFile::create(const std::string& path, Access access) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return fail(systemError(errno, fileNameOf(path)));
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

bool OutputFile::hasName() const {
    struct stat ours {};
    return ::fstat(m_descriptor, &ours) == 0 && ours.st_nlink > 0;
}

void OutputFile::remove() {
    struct stat ours {};
    struct stat named {};
    const bool isOurs = ::fstat(m_descriptor, &ours) == 0 && ::lstat(m_path.c_str(), &named) == 0 &&
                        ours.st_ino == named.st_ino && ours.st_dev == named.st_dev;
    if (isOurs)
        ::unlink(m_path.c_str());
}

Result<void> OutputFile::renameTo(const std::string& path) {
    if (::rename(m_path.c_str(), path.c_str()) != 0)
        return fail(systemError(errno, fileNameOf(path)));
    m_path = path;
    return syncFolder(folderOf(path));
}

Result<void> replaceFile(const std::string& path, const std::string& temporaryPath,
                         const std::function<Result<void>(OutputFile&)>& write) {
    TRY_LET(const auto file, OutputFile::create(temporaryPath, OutputFile::Access::rewritable));
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
