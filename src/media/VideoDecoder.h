#pragma once

#include "base/Result.h"
#include "media/MovieInput.h"

#include <memory>
#include <string>

namespace keldra {

/// Decodes one video stream of a file: frames in the order shown, with times in ticks of the stream that count from
/// the file's zero and rise strictly. Damaged frames are left out. Belongs to one thread at a time.
class VideoDecoder {
public:
    [[nodiscard]] static Result<std::unique_ptr<VideoDecoder>> open(const std::string& path, int streamIndex,
                                                                    int threadCount);

    AVRational timeBase() { return m_input->stream(m_streamIndex).time_base; }
    /// What the container says of the pixels' shape; the codec's word when it says nothing.
    AVRational sampleAspectRatio(const AVFrame& frame);

    /// The next frame, its `pts` on the file's line; null at the end.
    [[nodiscard]] Result<FramePtr> next();
    /// Answers with a frame at or before `ticks`, or the first of the stream; next() gives those after it.
    [[nodiscard]] Result<FramePtr> seek(std::int64_t ticks);
    /// Until `ticks` is reached nobody wants the frames before it: those that no others are built on may be left out.
    /// Holds until the next call; nothing is left out any more with AV_NOPTS_VALUE.
    void passOverBefore(std::int64_t ticks);
    /// Whether decoding on from here reaches `ticks` without passing a key frame that a seek would start from.
    bool isReachedByDecodingOn(std::int64_t ticks);

private:
    VideoDecoder() = default;
    /// One packet further into the codec, or the news of the end.
    [[nodiscard]] Result<void> feed();
    [[nodiscard]] Result<void> startFrom(std::int64_t ticks);
    [[nodiscard]] Result<void> startFromTheBeginning();
    void forgetPosition();
    /// Whether, as far as the container's index tells, frames from the key frame before `ticks` on follow at one pace.
    bool isEvenlyPacedBefore(std::int64_t ticks);
    /// Whether nobody misses the picture of this packet: it is over before the one that is sought.
    bool isPassedOver(const AVPacket& packet) const;

    std::unique_ptr<MovieInput> m_input;
    int m_streamIndex = 0;
    std::int64_t m_origin = 0;
    CodecContextPtr m_codec;
    PacketPtr m_packet;
    /// Of the packet read last.
    std::int64_t m_readTicks = AV_NOPTS_VALUE;
    std::int64_t m_lastShown = AV_NOPTS_VALUE;
    /// After a seek: packets before a key frame, and frames shown before it, lack what they are built on.
    bool m_isAwaitingKey = false;
    std::int64_t m_firstWhole = AV_NOPTS_VALUE;
    bool m_isInputAtEnd = false;
    /// Pictures before this that no others are built on are not decoded.
    std::int64_t m_soughtTicks = AV_NOPTS_VALUE;
};

} // namespace keldra
