#include "media/TakeFile.h"

#include "base/Log.h"
#include "media/DiskSpace.h"
#include "media/MediaError.h"
#include "media/RecoveryFolder.h"
#include "media/Remux.h"

#include <cerrno>

namespace keldra {
namespace {

/// Beside the take, where a rename is one step, and out of sight.
std::string hiddenNameFor(const std::string& path) {
    const std::string name = fileNameOf(path);
    return path.substr(0, path.size() - name.size()) + "." + name + ".finishing";
}

} // namespace

Result<std::unique_ptr<TakeFile>> TakeFile::create(const std::string& path, TakeKeeper::Listener listener) {
    TRY_LET(auto file, OutputFile::create(path, OutputFile::Access::append));
    auto muxer = MovieMuxer::open(*file, MovieMuxer::Shape::growing);
    if (!muxer) {
        file->remove();
        return fail(std::move(muxer.error()));
    }
    return std::unique_ptr<TakeFile>(new TakeFile(std::move(file), std::move(*muxer), std::move(listener)));
}

TakeFile::TakeFile(std::unique_ptr<OutputFile> file, std::unique_ptr<MovieMuxer> muxer, TakeKeeper::Listener listener)
    : m_file(std::move(file)), m_muxer(std::move(muxer)), m_keeper(*m_file, std::move(listener)) {}

TakeFile::~TakeFile() {
    if (const auto closed = close(); !closed)
        logFailure("closing a recording", closed.error());
}

Result<void> TakeFile::begin() {
    TRY(noteFailure(m_muxer->begin()));
    m_hasBegun = true;
    return {};
}

Result<void> TakeFile::write(AVPacket& packet, AVRational timeBase) {
    m_hasOpenFragment = true;
    return noteFailure(m_muxer->write(packet, timeBase));
}

Result<void> TakeFile::closeFragment() {
    if (m_hasFailed)
        return {};
    const bool hasNewData = m_hasOpenFragment;
    if (hasNewData) {
        TRY(noteFailure(m_muxer->closeFragment()));
        m_hasOpenFragment = false;
        m_safeBytes = m_file->size();
    }
    m_keeper.look(hasNewData);
    return {};
}

Result<void> TakeFile::noteFailure(Result<void> result) {
    if (!result && !m_hasFailed) {
        m_hasFailed = true;
        m_file->truncate(m_safeBytes);
    }
    return result;
}

Result<void> TakeFile::close() {
    // Nobody but the keeper knows whether the disk took all that the kernel did; and it must not see a name change.
    const Result<void> kept = m_keeper.finish();
    if (!m_hasBegun || m_hasFailed)
        return {};
    m_hasBegun = false;
    TRY(noteFailure(kept));
    TRY(closeFragment());
    TRY(noteFailure(m_muxer->finish()));
    m_safeBytes = m_file->size();
    return {};
}

Result<void> TakeFile::finish(MediaTime end) {
    TRY(close());
    TRY(noteFailure(m_file->checkName()));
    const auto made = makeOrdinary(end);
    if (made)
        return {};
    logFailure("making an ordinary movie of a recording", made.error());
    // It is the take now.
    return noteFailure(m_file->sync());
}

Result<void> TakeFile::makeOrdinary(MediaTime end) {
    const std::string path = m_file->path();
    if (!hasRoomForCopy(m_file->size(), m_file->freeBytes()))
        return fail(systemError(ENOSPC, fileNameOf(path)));
    return replaceFile(path, hiddenNameFor(path), [&](OutputFile& movie) {
        // By descriptor, so that a folder renamed meanwhile does no harm.
        return remuxIntoOrdinaryMovie(m_file->pathOfDescriptor(), fileNameOf(path), movie, end);
    });
}

std::string TakeFile::giveUp(const std::string& recoveryFolder) {
    if (const auto closed = close(); !closed)
        logFailure("closing a recording", closed.error());
    m_hasFailed = true;
    if (m_safeBytes == 0) {
        m_file->remove();
        return {};
    }
    // Whoever moved it, or removed it, has decided where it is.
    if (!m_file->checkName())
        return m_file->currentPath();
    if (const auto synced = m_file->sync(); !synced)
        logFailure("bringing a recording to the disk", synced.error());
    return putAside(*m_file, recoveryFolder);
}

void TakeFile::discard() {
    m_hasFailed = true;
    m_file->remove();
}

} // namespace keldra
