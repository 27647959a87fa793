#pragma once

#include "media/MovieWriter.h"

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
    std::optional<Error> startError;
    std::optional<Error> error;
    bool isReady = true;

    std::string path;
    VideoTrackSettings video;
    std::optional<MediaTime> sessionStart;
    std::vector<Sample> samples;
    std::optional<MediaTime> end;
    bool isMarkedFinished = false;
    bool isCancelled = false;
};

/// A movie writer that keeps what it is given.
class ScriptedMovieWriter final : public MovieWriter, private MovieWriterInput {
public:
    explicit ScriptedMovieWriter(std::shared_ptr<MovieWriterScript> script) : m_script(std::move(script)) {}

    Result<std::reference_wrapper<MovieWriterInput>> addVideoInput(const VideoTrackSettings& settings) override {
        m_script->video = settings;
        return std::ref<MovieWriterInput>(*this);
    }
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
    void cancelWriting() override { m_script->isCancelled = true; }
    std::optional<Error> error() const override { return m_script->error; }

private:
    bool isReadyForMoreMediaData() const override { return m_script->isReady; }
    bool append(PixelBuffer picture, MediaTime time) override {
        if (m_script->error)
            return false;
        m_script->samples.push_back({std::move(picture), time});
        return true;
    }
    void markAsFinished() override { m_script->isMarkedFinished = true; }

    std::shared_ptr<MovieWriterScript> m_script;
};

} // namespace keldra
