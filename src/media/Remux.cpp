#include "media/Remux.h"

#include "media/MediaError.h"
#include "media/MovieInput.h"
#include "media/MovieMuxer.h"
#include "media/OrdinaryCopy.h"
#include "media/PcmTrack.h"

#include <cstring>

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

/// Puts sound into the packets of a movie on their way from file to file.
class PacketSound {
public:
    PacketSound(MovieInput& input, const SoundAddition& addition) : m_input(input), m_addition(addition) {}

    /// Before the muxer begins.
    Result<void> prepare(MovieMuxer& muxer) {
        for (int index = 0; index < m_input.streamCount() && m_track < 0; ++index)
            if (m_input.stream(index).codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
                m_track = index;
        if (m_track >= 0)
            return useTrack(*m_input.stream(m_track).codecpar);
        m_format = {SampleKind::float32, addedSoundRate, 1};
        TRY_LET(const AVStream* const track, addPcmTrack(muxer, m_format));
        m_ownTrack = track->index;
        return {};
    }

    Result<void> edit(AVPacket& packet) const {
        if (packet.stream_index != m_track)
            return {};
        if (const int answer = av_packet_make_writable(&packet); answer < 0)
            return fail(libavError(answer, m_input.displayName()));
        const AVRational timeBase = m_input.stream(m_track).time_base;
        const std::int64_t first = av_rescale_q(packet.pts, timeBase, {1, addedSoundRate});
        const std::int64_t count = packet.size / m_format.bytesPerFrame();
        addSamples(reinterpret_cast<std::byte*>(packet.data), m_format, m_addition(first, count));
        return {};
    }

    /// Writes the track of our own up to that time of the file.
    Result<void> writeUpTo(MediaTime time, MovieMuxer& muxer) {
        const std::int64_t end = firstSampleAt(time, addedSoundRate);
        while (m_ownTrack >= 0 && m_nextFrame < end) {
            const auto samples = m_addition(m_nextFrame, std::min<std::int64_t>(end - m_nextFrame, addedSoundRate));
            const auto byteCount = int(samples.size() * sizeof(float));
            const PacketPtr packet(av_packet_alloc());
            if (const int answer = av_new_packet(packet.get(), byteCount); answer < 0)
                return fail(libavError(answer, m_input.displayName()));
            std::memcpy(packet->data, samples.data(), std::size_t(byteCount));
            packet->stream_index = m_ownTrack;
            packet->pts = packet->dts = m_nextFrame;
            packet->duration = std::int64_t(samples.size());
            m_nextFrame += packet->duration;
            TRY(muxer.write(*packet, {1, addedSoundRate}));
        }
        return {};
    }

private:
    Result<void> useTrack(const AVCodecParameters& parameters) {
        const auto kind = sampleKindOf(parameters.codec_id);
        if (!kind || parameters.sample_rate != addedSoundRate)
            return fail(mediaError(MediaError::invalidSettings,
                                   m_input.displayName() + ": its sound is not PCM at 48 kHz, so none can be added."));
        m_format = {*kind, parameters.sample_rate, parameters.ch_layout.nb_channels};
        return {};
    }

    MovieInput& m_input;
    const SoundAddition& m_addition;
    AudioFormat m_format;
    /// The track that is added to, or the one that is made; the other is -1.
    int m_track = -1;
    int m_ownTrack = -1;
    std::int64_t m_nextFrame = 0;
};

/// Ticks per second of a file's whole length.
constexpr std::int32_t lengthTimescale = AV_TIME_BASE;

Result<void> copyTracks(MovieInput& input, MovieMuxer& muxer) {
    for (int index = 0; index < input.streamCount(); ++index) {
        const AVStream& stream = input.stream(index);
        TRY_LET(AVStream* const track, muxer.addTrack(stream.time_base));
        if (const int answer = avcodec_parameters_copy(track->codecpar, stream.codecpar); answer < 0)
            return fail(libavError(answer, input.displayName()));
        track->sample_aspect_ratio = stream.sample_aspect_ratio;
        track->disposition = stream.disposition;
        track->avg_frame_rate = stream.avg_frame_rate;
        av_dict_copy(&track->metadata, stream.metadata, 0);
    }
    if (const std::string rate = input.tag(frameRateTag); !rate.empty())
        muxer.setTag(frameRateTag, rate);
    return {};
}

Result<void> remux(MovieInput& input, OutputFile& target, PacketSound& sound) {
    // A track of added sound has a packet a second.
    const std::int64_t addedBytes = 4096 + 36 * (input.duration() / AV_TIME_BASE + 2);
    TRY_LET(const auto muxer, MovieMuxer::open(target, MovieMuxer::Shape::quickTime,
                                               indexBytesFor(input) + std::max<std::int64_t>(0, addedBytes)));
    TRY(copyTracks(input, *muxer));
    TRY(sound.prepare(*muxer));
    TRY(muxer->begin());

    const PacketPtr packet(av_packet_alloc());
    for (;;) {
        TRY_LET(const bool hasPacket, input.read(*packet));
        if (!hasPacket)
            break;
        TRY(sound.edit(*packet));
        TRY(sound.writeUpTo(timeOf(packet->pts, input.stream(packet->stream_index).time_base), *muxer));
        TRY(muxer->write(*packet, input.stream(packet->stream_index).time_base));
        av_packet_unref(packet.get());
    }
    if (input.duration() != AV_NOPTS_VALUE)
        TRY(sound.writeUpTo(MediaTime(input.duration(), lengthTimescale), *muxer));
    return muxer->finish();
}

} // namespace

Result<void> remuxIntoOrdinaryMovie(const std::string& source, const std::string& displayName, OutputFile& target,
                                    MediaTime end) {
    TRY_LET(const auto input, MovieInput::open(source, displayName));
    TRY_LET(const auto muxer, MovieMuxer::open(target, MovieMuxer::Shape::quickTime, indexBytesFor(*input)));
    TRY(copyTracks(*input, *muxer));
    TRY(muxer->begin());
    return copyPackets(*input, source, *muxer, target, end);
}

Result<void> remuxAddingSound(const std::string& source, const std::string& displayName, OutputFile& target,
                              const SoundAddition& addition) {
    TRY_LET(const auto input, MovieInput::open(source, displayName));
    PacketSound sound(*input, addition);
    return remux(*input, target, sound);
}

} // namespace keldra
