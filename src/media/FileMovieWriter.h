#pragma once

#include "base/SerialQueue.h"
#include "media/MovieWriter.h"

#include <memory>
#include <string>
#include <vector>

namespace keldra {

class TakeWriter;

/// The writer of real files: H.264 by libx264 in a QuickTime movie, encoded and written on a thread of its own. How the
/// file lives on disk is told in docs/life-of-a-take.md.
///
/// A few pictures wait for that thread, each held until it is encoded: who draws from a pool needs `picturesInFlight`
/// more than it uses itself.
class FileMovieWriter final : public MovieWriter {
public:
    /// How many pictures may wait or be in work before an input is not ready.
    static constexpr int picturesInFlight = 5;
    /// How many seconds of sound may.
    static constexpr int secondsOfSoundInFlight = 2;

    explicit FileMovieWriter(std::string path);
    /// Neither finished nor given up: what was appended stays in the file. Waits for the writer's thread.
    ~FileMovieWriter() override;

    [[nodiscard]] Result<std::reference_wrapper<MovieWriterVideoInput>>
    addVideoInput(const VideoTrackSettings& settings) override;
    [[nodiscard]] Result<std::reference_wrapper<MovieWriterAudioInput>>
    addAudioInput(const AudioFormat& format) override;
    void setOnTrouble(Executor& answer, std::function<void(MovieWriterTrouble)> tell) override;
    void prepare() override;
    [[nodiscard]] Result<void> startWriting() override;
    void startSession(MediaTime time) override;
    void finishWriting(MediaTime end, Executor& answer, Completion<void> done) override;
    void giveUp(const std::string& recoveryFolder, Executor& answer, std::function<void(std::string)> done) override;
    std::optional<Error> error() const override;

private:
    class VideoInput;
    class AudioInput;
    struct Shared;

    bool isWriting() const { return m_queue != nullptr && !m_isOver; }
    bool takesSamples() const;
    /// Runs the work on the queue unless the writer has failed; an error makes it fail.
    void perform(std::function<Result<void>(TakeWriter&)> work);

    const std::string m_path;
    const std::shared_ptr<Shared> m_shared;
    std::unique_ptr<VideoInput> m_video;
    std::vector<std::unique_ptr<AudioInput>> m_sounds;
    std::optional<std::string> m_preset;
    MediaTime m_sessionStart = MediaTime::invalid();
    bool m_isOver = false;
    std::unique_ptr<SerialQueue> m_queue;
    Timer m_fragmentTimer;
};

/// A MovieWriterFactory.
[[nodiscard]] Result<std::unique_ptr<MovieWriter>> makeFileMovieWriter(const std::string& path);

} // namespace keldra
