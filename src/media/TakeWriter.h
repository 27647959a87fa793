#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/H264Encoder.h"
#include "media/MovieWriter.h"
#include "media/TakeFile.h"
#include "media/TakeSound.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace keldra {

/// How pictures are encoded as they come, at the plainest preset.
H264Settings liveEncoderSettings(const VideoTrackSettings& settings);

/// The half of FileMovieWriter that encodes and writes; all of it on the writer's queue once writing has begun.
/// After a failure nothing more is written.
class TakeWriter {
public:
    /// Ticks per second of the stamps.
    static constexpr std::int32_t timescale = 60000;

    [[nodiscard]] static Result<std::unique_ptr<TakeWriter>> create(const std::string& path,
                                                                    TakeKeeper::Listener listener);

    /// Without a preset the plainest is used, or the one that the environment forces.
    [[nodiscard]] Result<void> addVideo(const VideoTrackSettings& settings,
                                        const std::optional<std::string>& preset = {});
    /// The tracks are numbered from 0 in the order of these calls.
    [[nodiscard]] Result<void> addSound(const AudioFormat& format);
    [[nodiscard]] Result<void> begin();
    /// A BGRA picture; a stamp that does not rise is moved one tick behind the last.
    [[nodiscard]] Result<void> appendPicture(const PixelBuffer& picture, std::int64_t stamp);
    /// `firstFrame` is where it begins, in frames from the file's zero.
    [[nodiscard]] Result<void> appendSound(int number, const AudioBuffer& sound, std::int64_t firstFrame);
    [[nodiscard]] Result<void> closeFragment() { return m_file->closeFragment(); }
    /// `end` is on the file's line. Errors: not one picture was written.
    [[nodiscard]] Result<void> finish(MediaTime end);
    /// Closes the file as it is and moves it away; empty when it holds not one picture and is gone.
    std::string giveUp(const std::string& recoveryFolder);
    void discard() { m_file->discard(); }

private:
    struct VideoTrack {
        std::unique_ptr<H264Encoder> encoder;
        int index = 0;
        PixelBuffer converted;
        std::int64_t lastStamp = -1;
        std::int64_t lastKeyStamp = 0;
        bool hasPicture() const { return lastStamp >= 0; }
    };

    explicit TakeWriter(std::unique_ptr<TakeFile> file) : m_file(std::move(file)) {}
    [[nodiscard]] Result<void> write(AVPacket& packet);

    std::unique_ptr<TakeFile> m_file;
    VideoTrack m_video;
    std::vector<TakeSound> m_sounds;
    std::int64_t m_fragmentStart = 0;
};

} // namespace keldra
