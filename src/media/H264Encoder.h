#pragma once

#include "base/Result.h"
#include "imaging/PixelBuffer.h"
#include "media/BitBudget.h"
#include "media/Libav.h"
#include "media/MovieMuxer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace keldra {

/// Who encodes: libx264, or a graphics processor through libavcodec.
enum class H264Implementation { x264, vaapi, nvenc, qsv };

/// How H264Encoder works; either a bit rate or a quality.
struct H264Settings {
    H264Implementation implementation = H264Implementation::x264;
    /// Even.
    int width = 0;
    int height = 0;
    /// Of the stamps.
    AVRational timeBase{1, 1};
    /// What the stream says of its pace; a hint where stamps are irregular.
    AVRational frameRate{60, 1};
    /// Bits a second; a live libx264 keeps to it by the stamps, over a few seconds.
    std::optional<std::int64_t> averageBitRate;
    /// 0 to 51, less is better.
    std::optional<int> constantRateFactor;
    /// Of libx264; others have their own.
    std::string preset;
    /// Every picture leaves at once: no reordering, no look-ahead.
    bool isLive = false;
    /// In frames.
    int maximumKeyFrameInterval = 0;
    int threadCount = 2;
};

/// Pictures in, packets out. Tags the stream as BT.709 limited. Belongs to one thread at a time.
class H264Encoder {
public:
    using PacketSink = std::function<Result<void>(AVPacket&)>;

    [[nodiscard]] static Result<std::unique_ptr<H264Encoder>> open(const H264Settings& settings);

    AVRational timeBase() const { return m_codec->time_base; }
    /// Before the muxer begins; the packets' `stream_index` is the caller's to set.
    [[nodiscard]] Result<AVStream*> addTrackTo(MovieMuxer& muxer) const;

    /// Takes an i420 picture of the encoder's size; it may be written again at once. Stamps rise strictly.
    [[nodiscard]] Result<void> encode(const PixelBuffer& picture, std::int64_t stamp, bool asKeyFrame,
                                      const PacketSink& sink);
    /// Gives out what is still inside. Nothing may be encoded afterwards.
    [[nodiscard]] Result<void> drain(const PacketSink& sink);

private:
    H264Encoder(CodecContextPtr codec, std::optional<BitBudget> budget);
    /// The picture in the codec's own memory or layout, where it does not take ours.
    [[nodiscard]] Result<void> convertFrame(const PixelBuffer& picture);
    void wrapPicture(const PixelBuffer& picture);
    [[nodiscard]] Result<void> receive(const PacketSink& sink);

    CodecContextPtr m_codec;
    /// Of a live encoder that has an average to keep to.
    std::optional<BitBudget> m_budget;
    FramePtr m_frame;
    PacketPtr m_packet;
    /// With two planes, for codecs that want chroma in pairs.
    FramePtr m_paired;
};

} // namespace keldra
