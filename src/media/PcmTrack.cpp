#include "media/PcmTrack.h"

#include <array>
#include <utility>

namespace keldra {
namespace {

constexpr std::array<std::pair<SampleKind, AVCodecID>, 3> codecs{{{SampleKind::int16, AV_CODEC_ID_PCM_S16LE},
                                                                  {SampleKind::int24, AV_CODEC_ID_PCM_S24LE},
                                                                  {SampleKind::float32, AV_CODEC_ID_PCM_F32LE}}};

AVCodecID codecFor(SampleKind kind) {
    for (const auto& [stored, codec] : codecs)
        if (stored == kind)
            return codec;
    return AV_CODEC_ID_NONE;
}

} // namespace

std::optional<SampleKind> sampleKindOf(AVCodecID codec) {
    for (const auto& [stored, known] : codecs)
        if (known == codec)
            return stored;
    return std::nullopt;
}

Result<AVStream*> addPcmTrack(MovieMuxer& muxer, const AudioFormat& format) {
    TRY_LET(AVStream* const track, muxer.addTrack({1, format.sampleRate}));
    AVCodecParameters& parameters = *track->codecpar;
    parameters.codec_type = AVMEDIA_TYPE_AUDIO;
    parameters.codec_id = codecFor(format.kind);
    parameters.sample_rate = format.sampleRate;
    parameters.bits_per_coded_sample = format.bytesPerSample() * 8;
    parameters.block_align = format.bytesPerFrame();
    parameters.bit_rate = std::int64_t(format.sampleRate) * format.bytesPerFrame() * 8;
    av_channel_layout_default(&parameters.ch_layout, format.channelCount);
    track->disposition = AV_DISPOSITION_DEFAULT;
    return track;
}

} // namespace keldra
