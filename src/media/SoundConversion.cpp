#include "media/SoundConversion.h"

#include "media/MediaError.h"

#include <string>
#include <vector>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace keldra {
namespace {

/// The usual places of so many channels, where there are any.
AVChannelLayout knownLayout(const AVChannelLayout& channels) {
    AVChannelLayout layout{};
    if (channels.order == AV_CHANNEL_ORDER_NATIVE)
        layout = channels;
    else
        av_channel_layout_default(&layout, channels.nb_channels);
    return layout;
}

/// For what libav's own table gets wrong (mono would lose 3 dB) or does not know.
std::vector<double> channelShares(const AVChannelLayout& from, const AVChannelLayout& to) {
    const bool isKnown = from.order == AV_CHANNEL_ORDER_NATIVE && to.order == AV_CHANNEL_ORDER_NATIVE;
    if (from.nb_channels == to.nb_channels || (isKnown && from.nb_channels > 1))
        return {};
    return std::vector<double>(std::size_t(from.nb_channels) * std::size_t(to.nb_channels), 1.0 / from.nb_channels);
}

bool isPlausible(int sampleRate) {
    return sampleRate >= 100 && sampleRate <= 768'000;
}

} // namespace

SoundEnd soundEndOf(const AVFrame& frame) {
    return {AVSampleFormat(frame.format), frame.sample_rate, frame.ch_layout};
}

SoundEnd soundEndOf(const AudioFormat& format) {
    SoundEnd end{format.kind == SampleKind::int16 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLT, format.sampleRate, {}};
    av_channel_layout_default(&end.channels, format.channelCount);
    return end;
}

Result<SwrPtr> makeSoundConversion(const SoundEnd& from, const SoundEnd& to, std::string_view subject, int filterSize) {
    const auto refusal = [&] {
        return mediaError(MediaError::noDecoder, std::string(subject) + ": Sound of " +
                                                     std::to_string(from.channels.nb_channels) + " channels at " +
                                                     std::to_string(from.sampleRate) + " Hz cannot be converted");
    };
    // A filter grows with the ratio, and damaged files state any rate.
    if (from.sampleRate != to.sampleRate && !(isPlausible(from.sampleRate) && isPlausible(to.sampleRate)))
        return fail(refusal());
    AVChannelLayout source = knownLayout(from.channels);
    const bool isSameCount = source.nb_channels == to.channels.nb_channels;
    // As many channels stay the ones they are, whatever each side calls them.
    AVChannelLayout target = isSameCount ? source : knownLayout(to.channels);
    SwrContext* raw = nullptr;
    int answer =
        swr_alloc_set_opts2(&raw, &target, to.format, to.sampleRate, &source, from.format, from.sampleRate, 0, nullptr);
    SwrPtr context(raw);
    if (answer >= 0) {
        av_opt_set_double(context.get(), "rematrix_maxval", 1, 0);
        av_opt_set_int(context.get(), "filter_size", filterSize, 0);
        if (const auto shares = channelShares(source, target); !shares.empty())
            answer = swr_set_matrix(context.get(), shares.data(), source.nb_channels);
    }
    if (answer >= 0)
        answer = swr_init(context.get());
    if (answer < 0) {
        Error error = refusal();
        error.info = libavError(answer).info;
        return fail(std::move(error));
    }
    return context;
}

} // namespace keldra
