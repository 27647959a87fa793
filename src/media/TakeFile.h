#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "media/MovieMuxer.h"
#include "media/OutputFile.h"
#include "media/TakeKeeper.h"

#include <cstdint>
#include <memory>
#include <string>

namespace keldra {

/// The life of a recording on disk, told in docs/life-of-a-take.md: it grows under its final name, fragment by
/// fragment, and becomes an ordinary movie at the end. Belongs to one thread at a time.
class TakeFile {
public:
    /// Errors: the name exists, the folder is gone or may not be written.
    /// `listener` hears what is found out about the file meanwhile.
    [[nodiscard]] static Result<std::unique_ptr<TakeFile>> create(const std::string& path,
                                                                  TakeKeeper::Listener listener);
    /// Without any other end: what was written is closed and stays.
    ~TakeFile();
    TakeFile(const TakeFile&) = delete;
    TakeFile& operator=(const TakeFile&) = delete;

    /// Takes tracks until begin().
    MovieMuxer& muxer() { return *m_muxer; }
    [[nodiscard]] Result<void> begin();
    /// A failure (a full disk) is final; what was whole before it stays in the file.
    [[nodiscard]] Result<void> write(AVPacket& packet, AVRational timeBase);
    /// What came since the last fragment becomes safe from a killed process, and soon, from a machine without power.
    /// Called as often as the listener should learn the news, also when nothing came.
    [[nodiscard]] Result<void> closeFragment();

    /// Makes it an ordinary movie that lasts until `end`. Where that fails the growing file stays, whole and playable,
    /// and the reason is logged: only a take that cannot even be closed is an error. Errors: also a file that was
    /// removed.
    [[nodiscard]] Result<void> finish(MediaTime end);
    /// Closes it as it is and moves it out of its folder, see putAside(). Answers where it is now; empty when nothing
    /// that can be played was left.
    std::string giveUp(const std::string& recoveryFolder);
    /// Removes the file.
    void discard();

private:
    TakeFile(std::unique_ptr<OutputFile> file, std::unique_ptr<MovieMuxer> muxer, TakeKeeper::Listener listener);
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
    /// Goes first, because it looks at the file.
    TakeKeeper m_keeper;
};

} // namespace keldra
