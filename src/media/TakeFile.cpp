#include "media/TakeFile.h"

#include "base/Log.h"
#include "media/MediaError.h"
#include "media/Remux.h"

namespace keldra {
namespace {

/// Beside the take, where a rename is one step, and out of sight.
std::string hiddenNameFor(const std::string& path) {
    const std::string name = fileNameOf(path);
    return path.substr(0, path.size() - name.size()) + "." + name + ".finishing";
}

} // namespace

Result<std::unique_ptr<TakeFile>> TakeFile::create(const std::string& path) {
    TRY_LET(auto file, OutputFile::create(path, OutputFile::Access::append));
    auto muxer = MovieMuxer::open(*file, MovieMuxer::Shape::growing);
    if (!muxer) {
        file->remove();
        return fail(std::move(muxer.error()));
    }
    return std::unique_ptr<TakeFile>(new TakeFile(std::move(file), std::move(*muxer)));
}

TakeFile::TakeFile(std::unique_ptr<OutputFile> file, std::unique_ptr<MovieMuxer> muxer)
    : m_file(std::move(file)), m_muxer(std::move(muxer)) {}

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
    if (!m_file->hasName())
        return noteFailure(fail(
            mediaError(MediaError::fileRemoved,
                       fileNameOf(m_file->path()) + ": the file was removed, or its folder, while it was recorded")));
    if (!m_hasOpenFragment)
        return {};
    TRY(noteFailure(m_muxer->closeFragment()));
    m_hasOpenFragment = false;
    m_safeBytes = m_file->size();
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
    if (!m_hasBegun || m_hasFailed)
        return {};
    TRY(closeFragment());
    m_hasBegun = false;
    return noteFailure(m_muxer->finish());
}

Result<void> TakeFile::finish(MediaTime end) {
    TRY(close());
    if (const auto made = makeOrdinary(end); !made)
        logFailure("making an ordinary movie of a recording", made.error());
    return {};
}

Result<void> TakeFile::makeOrdinary(MediaTime end) {
    const std::string path = m_file->path();
    return replaceFile(path, hiddenNameFor(path), [&](OutputFile& movie) {
        // By descriptor, so that a folder renamed meanwhile does no harm.
        return remuxIntoOrdinaryMovie(m_file->pathOfDescriptor(), fileNameOf(path), movie, end);
    });
}

void TakeFile::discard() {
    m_hasFailed = true;
    m_file->remove();
}

} // namespace keldra
