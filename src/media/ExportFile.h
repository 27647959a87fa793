#pragma once

#include "base/MediaTime.h"
#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/H264Encoder.h"
#include "media/MovieMuxer.h"
#include "media/OutputFile.h"

#include <cstdint>
#include <memory>
#include <string>

namespace keldra {

/// An MP4 that is being encoded frame by frame at a constant rate. Belongs to one thread at a time.
class ExportFile {
public:
    /// Makes the file, which must not exist. Odd sides lose their last row or column.
    [[nodiscard]] static Result<std::unique_ptr<ExportFile>> create(const std::string& path, int width, int height,
                                                                    MediaTime frameDuration);

    /// The next frame, of the size given to create(), in either format.
    [[nodiscard]] Result<void> append(const PixelBuffer& picture);
    /// The next frame looks like the last one.
    [[nodiscard]] Result<void> appendAgain();
    /// Writes the index and moves it to the head.
    [[nodiscard]] Result<void> finish();
    /// Takes the unfinished file off the disk.
    void remove() { m_file->remove(); }

private:
    ExportFile() = default;
    [[nodiscard]] Result<void> open(int width, int height, MediaTime frameDuration);
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
};

} // namespace keldra
