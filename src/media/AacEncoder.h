#pragma once

#include "base/Result.h"
#include "media/AudioBuffer.h"
#include "media/Libav.h"
#include "media/MovieMuxer.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace keldra {

/// AAC: sound in, packets out, their times in samples. The codec's run-in stands before zero. Belongs to one thread at
/// a time.
class AacEncoder {
public:
    using PacketSink = std::function<Result<void>(PacketPtr)>;

    /// Bits per second.
    [[nodiscard]] static Result<std::unique_ptr<AacEncoder>> open(int sampleRate, int channelCount,
                                                                  std::int64_t bitRate);

    AVRational timeBase() const { return m_codec->time_base; }
    /// The frames that encode() wants at once; only the last time it may be fewer.
    int frameSize() const { return m_codec->frame_size; }
    /// Before the muxer begins; the packets' `stream_index` is the caller's to set.
    [[nodiscard]] Result<AVStream*> addTrackTo(MovieMuxer& muxer) const;

    /// Takes float32 sound of the encoder's rate and channels. What lies beyond full scale is clipped.
    [[nodiscard]] Result<void> encode(const AudioBuffer& sound, const PacketSink& sink);
    /// Gives out what is still inside. Nothing may be encoded afterwards.
    [[nodiscard]] Result<void> drain(const PacketSink& sink);

private:
    explicit AacEncoder(CodecContextPtr codec);
    [[nodiscard]] Result<void> receive(const PacketSink& sink);

    CodecContextPtr m_codec;
    std::int64_t m_position = 0;
};

} // namespace keldra
