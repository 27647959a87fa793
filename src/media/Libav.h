#pragma once

#include "base/Error.h"
#include "base/MediaTime.h"

#include <cstdint>
#include <memory>
#include <string_view>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
}

// For the .cpp files of this folder only: libav's objects with owners, its errors and its times in our words.

namespace keldra {

struct LibavDelete {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
using FramePtr = std::unique_ptr<AVFrame, LibavDelete>;
using PacketPtr = std::unique_ptr<AVPacket, LibavDelete>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, LibavDelete>;

/// Twice the largest screens; a damaged file may claim anything.
constexpr std::int64_t mostPicturePixels = std::int64_t(1) << 26;

/// Turns libav's log away from standard error, once; what it says last on a thread goes into that thread's errors.
void quietLibav();

/// libav's words for a negative return value, after `subject` if there is one.
Error libavError(int code, std::string_view subject = {});
/// The words alone.
std::string libavWords(int code);

MediaTime timeOf(std::int64_t ticks, AVRational timeBase);
/// The last tick at or before `time`, which must be numeric; held within 64 bits.
std::int64_t ticksAtOrBefore(MediaTime time, AVRational timeBase);

/// The width of a picture once its pixels are made square.
int squarePixelWidth(int width, AVRational sampleAspectRatio);

} // namespace keldra
