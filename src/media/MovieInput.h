#pragma once

#include "base/Result.h"
#include "media/Libav.h"

#include <memory>
#include <string>

namespace keldra {

/// A movie file opened for reading its packets. Belongs to one thread at a time.
class MovieInput {
public:
    /// `displayName` is how messages call the file.
    /// Errors: the system's words for a file that cannot be had, else why it is not a movie.
    [[nodiscard]] static Result<std::unique_ptr<MovieInput>> open(const std::string& path,
                                                                  const std::string& displayName);
    ~MovieInput();
    MovieInput(const MovieInput&) = delete;
    MovieInput& operator=(const MovieInput&) = delete;

    const std::string& displayName() const { return m_displayName; }
    int streamCount() const { return int(m_context->nb_streams); }
    AVStream& stream(int index) { return *m_context->streams[index]; }
    /// What the packets' times count from, in ticks of the stream: containers made for broadcast start anywhere, and
    /// an MP3 starts behind its decoder's run-in.
    std::int64_t originTicks(int index) const;
    /// Whether the file is one picture without a time of its own.
    bool isStillPicture() const;
    /// Whether the container is of this family, by libav's short name; MOV and MP4 are "mov".
    bool isContainer(const char* family) const;
    /// A fact about the whole movie that MovieMuxer::setTag() left; empty when there is none.
    std::string tag(const char* name) const;
    /// The frames per second that a video stream is made for: what the movie or its codec states, else what its times
    /// suggest. 0 when nothing is known.
    double nominalFrameRate(int index);
    /// Of the whole file, in AV_TIME_BASE; AV_NOPTS_VALUE when not known.
    std::int64_t duration() const { return m_context->duration; }

    /// From now on read() gives packets of this stream only.
    void readOnly(int index);
    /// False at the end. A damaged end of the file is an end.
    [[nodiscard]] Result<bool> read(AVPacket& packet);
    /// Goes to a key frame at or before `ticks`, as well as the container can.
    [[nodiscard]] Result<void> seek(int index, std::int64_t ticks);
    /// Goes to the stream's first packet.
    [[nodiscard]] Result<void> rewind(int index);

private:
    MovieInput(AVFormatContext* context, std::string displayName);

    AVFormatContext* m_context;
    std::string m_displayName;
};

} // namespace keldra
