#pragma once

#include "media/MovieWriter.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace keldra {

/// What a test sees and steers of a ScriptedMovieWriter; outlives the writer.
struct MovieWriterScript {
    struct Sample {
        PixelBuffer picture;
        MediaTime time;
    };
    /// A sound track, and whether it takes sound.
    struct SoundTrack {
        AudioFormat format;
        bool isReady = true;
        /// Ready for so many appends more, when set.
        std::optional<int> appendsLeft;
        std::vector<AudioBuffer> buffers;
        bool isMarkedFinished = false;
    };
    std::optional<Error> startError;
    std::optional<Error> error;
    bool isReady = true;
    bool refusesSound = false;
    /// Keeps copies, as a real writer lets go of what it was given; else the pictures themselves.
    bool copiesPictures = false;

    std::string path;
    bool isPrepared = false;
    VideoTrackSettings video;
    std::optional<MediaTime> sessionStart;
    std::vector<Sample> samples;
    /// In the order of their adding.
    std::deque<SoundTrack> sounds;
    std::optional<MediaTime> end;
    bool isMarkedFinished = false;
    bool isGivenUp = false;
    /// Where it was to be kept; what the writer then answers is `keptAt`.
    std::string recoveryFolder;
    std::string keptAt;
    /// Tells of trouble, once writing has begun.
    std::function<void(MovieWriterTrouble)> tell;
};

/// A movie writer that keeps what it is given.
class ScriptedMovieWriter final : public MovieWriter, private MovieWriterVideoInput {
public:
    explicit ScriptedMovieWriter(std::shared_ptr<MovieWriterScript> script) : m_script(std::move(script)) {}

    Result<std::reference_wrapper<MovieWriterVideoInput>> addVideoInput(const VideoTrackSettings& settings) override {
        m_script->video = settings;
        return std::ref<MovieWriterVideoInput>(*this);
    }
    Result<std::reference_wrapper<MovieWriterAudioInput>> addAudioInput(const AudioFormat& format) override {
        if (m_script->refusesSound)
            return fail(Error{"test", 1, "no sound", {}});
        m_script->sounds.push_back({format, true, {}, {}, false});
        m_sounds.emplace_back(*m_script, m_script->sounds.back());
        return std::ref<MovieWriterAudioInput>(m_sounds.back());
    }
    void prepare() override { m_script->isPrepared = true; }
    Result<void> startWriting() override {
        return m_script->startError ? Result<void>(fail(*m_script->startError)) : Result<void>();
    }
    void startSession(MediaTime time) override { m_script->sessionStart = time; }
    void finishWriting(MediaTime end, Executor& answer, Completion<void> done) override {
        m_script->end = end;
        answer.post([done = std::move(done), error = m_script->error] {
            done(error ? Result<void>(fail(*error)) : Result<void>());
        });
    }
    void setOnTrouble(Executor& answer, std::function<void(MovieWriterTrouble)> tell) override {
        m_script->tell = [&answer, tell = std::move(tell)](MovieWriterTrouble trouble) {
            answer.post([tell, trouble] { tell(trouble); });
        };
    }
    void giveUp(const std::string& recoveryFolder, Executor& answer, std::function<void(std::string)> done) override {
        m_script->isGivenUp = true;
        m_script->recoveryFolder = recoveryFolder;
        answer.post([done = std::move(done), keptAt = m_script->keptAt] { done(keptAt); });
    }
    std::optional<Error> error() const override { return m_script->error; }

private:
    class Sound final : public MovieWriterAudioInput {
    public:
        Sound(MovieWriterScript& script, MovieWriterScript::SoundTrack& track) : m_script(script), m_track(track) {}
        bool isReadyForMoreMediaData() const override { return m_track.isReady && m_track.appendsLeft != 0; }
        bool append(const AudioBuffer& sound) override {
            if (m_script.error || !isReadyForMoreMediaData())
                return false;
            if (m_track.appendsLeft)
                *m_track.appendsLeft -= 1;
            m_track.buffers.push_back(sound);
            return true;
        }
        void markAsFinished() override { m_track.isMarkedFinished = true; }

    private:
        MovieWriterScript& m_script;
        MovieWriterScript::SoundTrack& m_track;
    };

    bool isReadyForMoreMediaData() const override { return m_script->isReady; }
    bool append(PixelBuffer picture, MediaTime time) override {
        if (m_script->error)
            return false;
        m_script->samples.push_back({m_script->copiesPictures ? copyOf(picture) : std::move(picture), time});
        return true;
    }
    static PixelBuffer copyOf(const PixelBuffer& picture) {
        PixelBuffer copy = PixelBuffer::allocate(picture.format(), picture.width(), picture.height());
        for (int y = 0; y < picture.height(); ++y)
            std::copy_n(picture.row(0, y), std::size_t(picture.width()) * 4, copy.mutableRow(0, y));
        return copy;
    }
    void markAsFinished() override { m_script->isMarkedFinished = true; }

    std::shared_ptr<MovieWriterScript> m_script;
    std::deque<Sound> m_sounds;
};

} // namespace keldra
