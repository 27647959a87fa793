#pragma once

#include "base/Result.h"
#include "media/Libav.h"
#include "media/OutputFile.h"

#include <cstdint>
#include <memory>
#include <string>

namespace keldra {

/// Tag of a recording: the frames per second that it was made for. Its pictures come only when the screen changes, so
/// their times do not tell.
inline constexpr const char* frameRateTag = "keldra.frame-rate";

/// Puts packets of several tracks into a movie file. Times are as the caller gives them, from the file's zero: a track
/// that starts late stays late. Belongs to one thread at a time.
class MovieMuxer {
public:
    enum class Shape {
        growing,   ///< a QuickTime file of fragments, readable up to the last closed one at any moment
        quickTime, ///< an ordinary QuickTime file, its index at the head in the room kept for it
        mp4,       ///< an ordinary MP4, its index moved to the head at the end
    };

    /// `indexBytes` is the room kept for the index of a quickTime file.
    [[nodiscard]] static Result<std::unique_ptr<MovieMuxer>> open(OutputFile& file, Shape shape,
                                                                  std::int64_t indexBytes = 0);
    ~MovieMuxer();
    MovieMuxer(const MovieMuxer&) = delete;
    MovieMuxer& operator=(const MovieMuxer&) = delete;

    /// Before begin(), until when the caller describes what the track holds.
    [[nodiscard]] Result<AVStream*> addTrack(AVRational timeBase);
    /// Before begin(): a fact about the whole movie, under a name of our own.
    void setTag(const char* name, const std::string& value);
    [[nodiscard]] Result<void> begin();
    /// The packet's times are in `timeBase`, its track in `stream_index`. Within a track decoding times rise strictly.
    [[nodiscard]] Result<void> write(AVPacket& packet, AVRational timeBase);
    /// growing: closes the fragment and hands it to the kernel.
    [[nodiscard]] Result<void> closeFragment();
    [[nodiscard]] Result<void> finish();

private:
    MovieMuxer(AVFormatContext* context, OutputFile& file, Shape shape, std::int64_t indexBytes);
    /// The file's error if it has one, else libav's.
    [[nodiscard]] Result<void> checked(int answer);

    AVFormatContext* m_context;
    OutputFile& m_file;
    Shape m_shape;
    std::int64_t m_indexBytes;
    bool m_hasIndex = false;
};

} // namespace keldra
