#include "media/FileMovieWriter.h"

#include "media/MediaError.h"
#include "media/PresetTrial.h"
#include "media/TakeWriter.h"

#include <atomic>
#include <cassert>
#include <mutex>
#include <optional>

namespace keldra {

/// What all threads know.
struct FileMovieWriter::Shared {
    /// Read by the owner, raised and lowered around each picture.
    std::atomic<int> picturesWaiting = 0;
    /// Stand still once writing has begun.
    Executor* troubleAnswer = nullptr;
    std::function<void(MovieWriterTrouble)> onTrouble;

    mutable std::mutex lock;
    std::optional<Error> firstError;
    /// Made before the queue, then the queue's. Last, because what it watches its file with tells the others.
    std::unique_ptr<TakeWriter> writer;

    std::optional<Error> error() const {
        const std::lock_guard guard(lock);
        return firstError;
    }
    void setError(Error error) {
        {
            const std::lock_guard guard(lock);
            if (firstError)
                return;
            firstError = std::move(error);
        }
        tell(MovieWriterTrouble::failed);
    }
    void tell(MovieWriterTrouble trouble) const {
        if (onTrouble)
            troubleAnswer->post([tell = onTrouble, trouble] { tell(trouble); });
    }
};

class FileMovieWriter::VideoInput final : public MovieWriterVideoInput {
public:
    VideoInput(FileMovieWriter& writer, const VideoTrackSettings& settings) : m_writer(writer), m_settings(settings) {}

    const VideoTrackSettings& settings() const { return m_settings; }

    bool isReadyForMoreMediaData() const override {
        return !m_isFinished && m_writer.takesSamples() && m_writer.m_shared->picturesWaiting < picturesInFlight;
    }

    bool append(PixelBuffer picture, MediaTime time) override {
        assert(picture.format() == PixelFormat::bgra);
        const bool fits = picture.width() == m_settings.width && picture.height() == m_settings.height;
        if (!isReadyForMoreMediaData() || !fits || !time.isNumeric())
            return false;
        const MediaTime fileTime = time - m_writer.m_sessionStart;
        if (fileTime < MediaTime::zero() || (m_lastTime.isNumeric() && time <= m_lastTime))
            return false;
        m_lastTime = time;
        const std::int64_t stamp = fileTime.converted(TakeWriter::timescale).value();
        m_writer.m_shared->picturesWaiting += 1;
        // Lowered however the piece ends, also when it is skipped.
        std::shared_ptr<void> waiting(nullptr, [shared = m_writer.m_shared](void*) { shared->picturesWaiting -= 1; });
        m_writer.perform([picture = std::move(picture), stamp, waiting = std::move(waiting)](TakeWriter& writer) {
            return writer.appendPicture(picture, stamp);
        });
        return true;
    }

    void markAsFinished() override { m_isFinished = true; }

private:
    FileMovieWriter& m_writer;
    const VideoTrackSettings m_settings;
    MediaTime m_lastTime = MediaTime::invalid();
    bool m_isFinished = false;
};

class FileMovieWriter::AudioInput final : public MovieWriterAudioInput {
public:
    AudioInput(FileMovieWriter& writer, const AudioFormat& format, int number)
        : m_writer(writer), m_format(format), m_number(number) {}

    const AudioFormat& format() const { return m_format; }

    bool isReadyForMoreMediaData() const override {
        return !m_isFinished && m_writer.takesSamples() &&
               *m_framesWaiting < std::int64_t(m_format.sampleRate) * secondsOfSoundInFlight;
    }

    bool append(const AudioBuffer& sound) override {
        if (!isReadyForMoreMediaData() || !sound || sound.format() != m_format || !sound.time().isNumeric())
            return false;
        const MediaTime fileTime = sound.time() - m_writer.m_sessionStart;
        const std::int64_t firstFrame = fileTime.converted(m_format.sampleRate).value();
        const std::int64_t count = sound.frameCount();
        *m_framesWaiting += count;
        // Lowered however the piece ends, also when it is skipped.
        std::shared_ptr<void> waiting(nullptr,
                                      [framesWaiting = m_framesWaiting, count](void*) { *framesWaiting -= count; });
        m_writer.perform([sound, firstFrame, number = m_number, waiting = std::move(waiting)](TakeWriter& writer) {
            return writer.appendSound(number, sound, firstFrame);
        });
        return true;
    }

    void markAsFinished() override { m_isFinished = true; }

private:
    FileMovieWriter& m_writer;
    const AudioFormat m_format;
    const int m_number;
    const std::shared_ptr<std::atomic<std::int64_t>> m_framesWaiting = std::make_shared<std::atomic<std::int64_t>>(0);
    bool m_isFinished = false;
};

FileMovieWriter::FileMovieWriter(std::string path) : m_path(std::move(path)), m_shared(std::make_shared<Shared>()) {}

FileMovieWriter::~FileMovieWriter() = default;

bool FileMovieWriter::takesSamples() const {
    return isWriting() && m_sessionStart.isNumeric() && !m_shared->error();
}

Result<std::reference_wrapper<MovieWriterVideoInput>>
FileMovieWriter::addVideoInput(const VideoTrackSettings& settings) {
    const bool isUsable = settings.width > 0 && settings.height > 0 && settings.width % 2 == 0 &&
                          settings.height % 2 == 0 && settings.averageBitRate > 0 &&
                          settings.maximumKeyFrameInterval > 0;
    if (!isUsable || m_video || m_queue)
        return fail(
            mediaError(MediaError::invalidSettings, "The movie's picture cannot be written with these settings."));
    m_video = std::make_unique<VideoInput>(*this, settings);
    return std::ref<MovieWriterVideoInput>(*m_video);
}

Result<std::reference_wrapper<MovieWriterAudioInput>> FileMovieWriter::addAudioInput(const AudioFormat& format) {
    if (format.sampleRate <= 0 || format.channelCount <= 0 || m_queue)
        return fail(
            mediaError(MediaError::invalidSettings, "The movie's sound cannot be written with these settings."));
    m_sounds.push_back(std::make_unique<AudioInput>(*this, format, int(m_sounds.size())));
    return std::ref<MovieWriterAudioInput>(*m_sounds.back());
}

void FileMovieWriter::setOnTrouble(Executor& answer, std::function<void(MovieWriterTrouble)> tell) {
    assert(!m_queue);
    m_shared->troubleAnswer = &answer;
    m_shared->onTrouble = std::move(tell);
}

void FileMovieWriter::prepare() {
    assert(!m_queue && m_video);
    m_preset = tryPresets(liveEncoderSettings(m_video->settings()));
}

Result<void> FileMovieWriter::startWriting() {
    assert(!m_queue && m_video);
    // What is shared goes after the writer and its file.
    TakeKeeper::Listener listener;
    listener.failed = [shared = m_shared.get()](const Error& error) { shared->setError(error); };
    listener.diskNearlyFull = [shared = m_shared.get()] { shared->tell(MovieWriterTrouble::diskNearlyFull); };
    TRY_LET(auto writer, TakeWriter::create(m_path, std::move(listener)));
    const auto begin = [&]() -> Result<void> {
        TRY(writer->addVideo(m_video->settings(), m_preset));
        for (const auto& sound : m_sounds)
            TRY(writer->addSound(sound->format()));
        return writer->begin();
    };
    if (Result<void> begun = begin(); !begun) {
        writer->discard();
        m_shared->setError(begun.error());
        return begun;
    }
    m_shared->writer = std::move(writer);
    m_queue = std::make_unique<SerialQueue>("KELDRA.MovieWriter");
    // Twice a second, so that with a slow disk and a busy queue a picture is safe within one.
    m_fragmentTimer = m_queue->every(std::chrono::milliseconds(500), [shared = m_shared] {
        if (shared->error())
            return;
        if (Result<void> closed = shared->writer->closeFragment(); !closed)
            shared->setError(std::move(closed.error()));
    });
    return {};
}

void FileMovieWriter::startSession(MediaTime time) {
    assert(time.isNumeric());
    m_sessionStart = time;
}

void FileMovieWriter::perform(std::function<Result<void>(TakeWriter&)> work) {
    m_queue->post([shared = m_shared, work = std::move(work)] {
        if (shared->error())
            return;
        if (Result<void> done = work(*shared->writer); !done)
            shared->setError(std::move(done.error()));
    });
}

void FileMovieWriter::finishWriting(MediaTime end, Executor& answer, Completion<void> done) {
    assert(isWriting());
    m_isOver = true;
    m_fragmentTimer.cancel();
    const MediaTime fileEnd = end - m_sessionStart;
    perform([fileEnd](TakeWriter& writer) { return writer.finish(fileEnd); });
    // Handed on, not copied: the completion may hold our owner, whose last handle must not go on our own queue.
    m_queue->post([shared = m_shared, &answer, done = std::move(done)]() mutable {
        const std::optional<Error> error = shared->error();
        answer.post(
            [done = std::move(done), result = error ? Result<void>(fail(*error)) : Result<void>()] { done(result); });
    });
}

void FileMovieWriter::giveUp(const std::string& recoveryFolder, Executor& answer,
                             std::function<void(std::string)> done) {
    const bool hasFailedFinish = m_isOver && m_shared->error();
    if (!isWriting() && !hasFailedFinish) {
        answer.post([done = std::move(done)] { done({}); });
        return;
    }
    m_isOver = true;
    m_fragmentTimer.cancel();
    m_queue->post([shared = m_shared, recoveryFolder, &answer, done = std::move(done)]() mutable {
        answer.post([done = std::move(done), keptAt = shared->writer->giveUp(recoveryFolder)] { done(keptAt); });
    });
}

std::optional<Error> FileMovieWriter::error() const {
    return m_shared->error();
}

Result<std::unique_ptr<MovieWriter>> makeFileMovieWriter(const std::string& path) {
    return std::unique_ptr<MovieWriter>(std::make_unique<FileMovieWriter>(path));
}

} // namespace keldra
