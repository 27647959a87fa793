#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/EncoderChoice.h"
#include "media/H264Encoder.h"
#include "media/MovieMuxer.h"
#include "media/OutputFile.h"
#include "media/SoundEncoding.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace keldra {

/// An MP4 that is being encoded frame by frame at a constant rate, with sound beside the pictures or alone; packets
/// stand in it in the order of time. Belongs to one thread at a time.
class ExportFile {
public:
    struct Picture {
        /// Odd sides lose their last row or column.
        int width = 0;
        int height = 0;
        MediaTime frameDuration;
        EncoderChoice encoder = EncoderChoice::x264;
    };

    /// Makes the file, which must not exist. The sound outlives it and is started by the caller.
    [[nodiscard]] static Result<std::unique_ptr<ExportFile>>
    create(const std::string& path, const std::optional<Picture>& picture, SoundEncoding* sound);

    /// The next frame, of the size given to create(), in either format.
    [[nodiscard]] Result<void> append(const PixelBuffer& picture);
    /// The next frame looks like the last one.
    [[nodiscard]] Result<void> appendAgain();
    /// The next packet of the sound, and where it ends. Invalid when there is none left. For sound alone; beside
    /// pictures it follows them by itself.
    [[nodiscard]] Result<MediaTime> appendSound();
    /// Writes what is left, then the index and moves it to the head.
    [[nodiscard]] Result<void> finish();
    /// Takes the unfinished file off the disk.
    void remove() { m_file->remove(); }

private:
    ExportFile() = default;
    [[nodiscard]] Result<void> open(const std::optional<Picture>& picture);
    [[nodiscard]] Result<void> openPicture(const Picture& picture);
    /// All sound that belongs before this moment of the file.
    [[nodiscard]] Result<void> writeSoundBefore(std::int64_t ticks, AVRational timeBase);
    [[nodiscard]] H264Encoder::PacketSink packetSink();

    std::unique_ptr<OutputFile> m_file;
    std::unique_ptr<MovieMuxer> m_muxer;
    std::unique_ptr<H264Encoder> m_encoder;
    int m_width = 0;
    int m_height = 0;
    /// Where BGRA frames are converted into.
    PixelBuffer m_converted;
    /// What the last frame was encoded from.
    PixelBuffer m_last;
    std::int64_t m_frameCount = 0;

    SoundEncoding* m_sound = nullptr;
    int m_soundTrack = 0;
    /// Taken from the sound, and its turn has not come.
    PacketPtr m_soundPacket;
    bool m_isSoundAtEnd = false;
};

} // namespace keldra
