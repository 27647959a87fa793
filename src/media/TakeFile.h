#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "media/MovieMuxer.h"
#include "media/OutputFile.h"

#include <cstdint>
#include <memory>
#include <string>

namespace keldra {

/// The life of a recording on disk, told in docs/life-of-a-take.md: it grows under its final name, fragment by
/// fragment, and becomes an ordinary movie at the end. Belongs to one thread at a time.
class TakeFile {
public:
    /// Errors: the name exists, the folder is gone or may not be written.
    [[nodiscard]] static Result<std::unique_ptr<TakeFile>> create(const std::string& path);
    /// Without finish() or discard(): what was written is closed and stays.
    ~TakeFile();
    TakeFile(const TakeFile&) = delete;
    TakeFile& operator=(const TakeFile&) = delete;

    /// Takes tracks until begin().
    MovieMuxer& muxer() { return *m_muxer; }
    [[nodiscard]] Result<void> begin();
    /// A failure (a full disk) is final; what was whole before it stays in the file.
    [[nodiscard]] Result<void> write(AVPacket& packet, AVRational timeBase);
    /// What came since the last fragment becomes safe from a killed process. Errors: also a file that was removed.
    [[nodiscard]] Result<void> closeFragment();

    /// Makes it an ordinary movie that lasts until `end`. Where that fails the growing file stays, whole and playable,
    /// and the reason is logged: only a take that cannot even be closed is an error.
    [[nodiscard]] Result<void> finish(MediaTime end);
    /// Removes the file.
    void discard();

private:
    TakeFile(std::unique_ptr<OutputFile> file, std::unique_ptr<MovieMuxer> muxer);
    [[nodiscard]] Result<void> close();
    [[nodiscard]] Result<void> makeOrdinary(MediaTime end);
    [[nodiscard]] Result<void> noteFailure(Result<void> result);

    std::unique_ptr<OutputFile> m_file;
    std::unique_ptr<MovieMuxer> m_muxer;
    /// Where the last whole fragment ends.
    std::int64_t m_safeBytes = 0;
    bool m_hasBegun = false;
    bool m_hasOpenFragment = false;
    bool m_hasFailed = false;
};

} // namespace keldra
