#pragma once

#include "base/Result.h"
#include "media/Libav.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace keldra {

/// A file of our own making, opened for libav to write. Belongs to one thread at a time; another may call what is
/// marked so, as long as the file is not renamed meanwhile.
class OutputFile {
public:
    enum class Access {
        append,    ///< what is written stays as it is
        rewritable ///< libav may go back and read
    };

    /// Makes the file; a name that exists is an error. The file is locked (flock) as long as this object lives.
    [[nodiscard]] static Result<std::unique_ptr<OutputFile>> create(const std::string& path, Access access);
    /// Makes a rewritable file that has no name until renameTo(), so that nothing is left of it should the process end
    /// before; where a file system has no such files it stands at `path` until then.
    [[nodiscard]] static Result<std::unique_ptr<OutputFile>> createUnnamed(const std::string& path);
    /// Closes. What was written stays.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& path() const { return m_path; }
    AVIOContext* io() { return m_io; }
    /// What the kernel has taken so far.
    std::int64_t size() const;

    /// Hands everything on to the kernel. Errors: the first that any write met, e.g. "take.mov: No space left on
    /// device".
    [[nodiscard]] Result<void> flush();
    /// Where libav writes next.
    std::int64_t position() const;
    /// From now on what libav writes is left out, as a hole of the same length, until this is called with false.
    [[nodiscard]] Result<void> leaveOut(bool isLeftOut);
    /// Puts bytes of another file at that place of this one, by the kernel's own means where it has some.
    [[nodiscard]] Result<void> copyFrom(int source, std::int64_t sourceOffset, std::int64_t count, std::int64_t offset);
    /// Waits until the disk has it.
    [[nodiscard]] Result<void> sync();
    /// The same for all that is needed to read it again. Any thread.
    [[nodiscard]] Result<void> syncData() const;
    /// The same for its name. Any thread.
    [[nodiscard]] Result<void> syncFolder() const;
    /// An error when the file was removed or moved, or its folder: what is written under no name is lost with the last
    /// descriptor. Any thread.
    [[nodiscard]] Result<void> checkName() const;
    /// What may still be written beside it, if the file system tells. Any thread.
    std::optional<std::int64_t> freeBytes() const;
    /// Cuts off what lies behind `size`.
    void truncate(std::int64_t size);
    /// Where this very file can be opened again, whatever became of its name.
    std::string pathOfDescriptor() const;
    /// The name by which the kernel knows it now, wherever it was moved; empty once it was removed.
    std::string currentPath() const;
    /// Takes the name off the disk, unless it has become another file's.
    void remove();
    /// Replaces whatever stands at `path` by this file, and makes sure that the folder remembers it.
    [[nodiscard]] Result<void> renameTo(const std::string& path);
    /// Gives it another name on the same disk. Errors: EEXIST where the name is taken, EXDEV on another disk, and
    /// whatever else the system says; the file then keeps its name.
    [[nodiscard]] Result<void> renameToFreeName(const std::string& path);

private:
    OutputFile(int descriptor, std::string path);
    static std::unique_ptr<OutputFile> wrap(int descriptor, const std::string& path, Access access);
    Result<void> giveName();
    bool isAt(const std::string& path) const;
    static int writeBytes(void* self, std::uint8_t* bytes, int count);
    static int readBytes(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekTo(void* self, std::int64_t offset, int whence);

    int m_descriptor;
    std::string m_path;
    AVIOContext* m_io = nullptr;
    int m_errno = 0;
    bool m_isLeftOut = false;
    bool m_isUnnamed = false;
};

/// The folder that a path names its file in.
std::string folderOf(const std::string& path);

/// Has a new file written beside `path` and puts it in its place once it is whole and on the disk. When that fails, or
/// the process ends before, `path` stands as before and the new file is gone; only where a file system knows no files
/// without a name, a process that ends leaves `temporaryPath`.
[[nodiscard]] Result<void> replaceFile(const std::string& path, const std::string& temporaryPath,
                                       const std::function<Result<void>(OutputFile&)>& write);

} // namespace keldra
