#include "media/Remux.h"

#include "media/MovieInput.h"
#include "media/MovieMuxer.h"

#include <vector>

namespace keldra {
namespace {

/// An upper bound of what the index takes: per packet at most a length of time (8 bytes), a size (4), a chunk (8 + 12)
/// and a key frame's number (4).
std::int64_t indexBytesFor(MovieInput& input) {
    constexpr std::int64_t perPacket = 36;
    constexpr std::int64_t perTrack = 4096;
    std::int64_t bytes = perTrack;
    for (int index = 0; index < input.streamCount(); ++index)
        bytes += perTrack + perPacket * avformat_index_get_entries_count(&input.stream(index));
    return bytes;
}

/// Holds each track's newest packet back, because only the end of the file tells how long the last one lasts.
class PacketCopier {
public:
    PacketCopier(MovieInput& input, MovieMuxer& muxer) : m_input(input), m_muxer(muxer) {
        for (int index = 0; index < input.streamCount(); ++index)
            m_held.emplace_back(av_packet_alloc());
    }

    Result<void> copy(AVPacket& packet) {
        AVPacket& held = *m_held[std::size_t(packet.stream_index)];
        if (held.data != nullptr)
            TRY(write(held));
        av_packet_move_ref(&held, &packet);
        return {};
    }

    Result<void> finish(MediaTime end) {
        for (const PacketPtr& held : m_held) {
            if (held->data == nullptr)
                continue;
            const AVStream& stream = m_input.stream(held->stream_index);
            if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && end.isNumeric()) {
                const std::int64_t lasting = ticksAtOrBefore(end, stream.time_base) - held->pts;
                if (lasting > 0)
                    held->duration = lasting;
            }
            TRY(write(*held));
        }
        return {};
    }

private:
    Result<void> write(AVPacket& packet) {
        Result<void> written = m_muxer.write(packet, m_input.stream(packet.stream_index).time_base);
        av_packet_unref(&packet);
        return written;
    }

    MovieInput& m_input;
    MovieMuxer& m_muxer;
    std::vector<PacketPtr> m_held;
};

} // namespace

Result<void> remuxIntoOrdinaryMovie(const std::string& source, const std::string& displayName, OutputFile& target,
                                    MediaTime end) {
    TRY_LET(const auto input, MovieInput::open(source, displayName));
    TRY_LET(const auto muxer, MovieMuxer::open(target, MovieMuxer::Shape::quickTime, indexBytesFor(*input)));
    for (int index = 0; index < input->streamCount(); ++index) {
        const AVStream& stream = input->stream(index);
        TRY_LET(AVStream* const track, muxer->addTrack(stream.time_base));
        if (const int answer = avcodec_parameters_copy(track->codecpar, stream.codecpar); answer < 0)
            return fail(libavError(answer, displayName));
        track->sample_aspect_ratio = stream.sample_aspect_ratio;
        track->disposition = stream.disposition;
        track->avg_frame_rate = stream.avg_frame_rate;
        av_dict_copy(&track->metadata, stream.metadata, 0);
    }
    if (const std::string rate = input->tag(frameRateTag); !rate.empty())
        muxer->setTag(frameRateTag, rate);
    TRY(muxer->begin());

    PacketCopier copier(*input, *muxer);
    const PacketPtr packet(av_packet_alloc());
    for (;;) {
        TRY_LET(const bool hasPacket, input->read(*packet));
        if (!hasPacket)
            break;
        TRY(copier.copy(*packet));
    }
    TRY(copier.finish(end));
    return muxer->finish();
}

} // namespace keldra
