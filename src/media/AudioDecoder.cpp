#include "media/AudioDecoder.h"

#include "media/MediaError.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace keldra {
namespace {

/// Times beyond this are damage; far from overflow in samples.
constexpr std::int64_t farthest = std::int64_t(1) << 50;

/// Codecs whose packets stand alone.
bool isLossless(AVCodecID codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0;
}

/// What every packet's length is a multiple of; 0 when the first packet has to tell.
std::int64_t packetGridOf(AVCodecID codec) {
    switch (codec) {
    case AV_CODEC_ID_OPUS: // RFC 6716, 2.1.4: 2.5 ms
        return 120;
    case AV_CODEC_ID_VORBIS: // a quarter of the shortest block in use
        return 64;
    default:
        return 0;
    }
}

/// The length that an edit list states, where the last packet holds more than it shows.
std::optional<std::int64_t> statedEnd(MovieInput& input, AVStream& stream) {
    const bool isCounted = stream.nb_frames > 0 && stream.nb_frames == avformat_index_get_entries_count(&stream) &&
                           input.isContainer("mov");
    if (!isCounted || stream.start_time == AV_NOPTS_VALUE || stream.duration <= 0)
        return std::nullopt;
    const AVIndexEntry* last = avformat_index_get_entry(&stream, int(stream.nb_frames) - 1);
    const std::int64_t end = av_sat_add64(stream.start_time, stream.duration);
    if (last == nullptr || end <= last->timestamp)
        return std::nullopt;
    return av_rescale_q(end, stream.time_base, {1, stream.codecpar->sample_rate});
}

} // namespace

Result<std::unique_ptr<AudioDecoder>> AudioDecoder::open(const std::string& path, int streamIndex) {
    std::unique_ptr<AudioDecoder> decoder(new AudioDecoder);
    decoder->m_path = path;
    decoder->m_streamIndex = streamIndex;
    decoder->m_packet.reset(av_packet_alloc());
    TRY(decoder->openInput());
    MovieInput& input = *decoder->m_input;
    AVStream& stream = input.stream(streamIndex);
    const AVCodecParameters& parameters = *stream.codecpar;
    if (parameters.sample_rate <= 0 || parameters.ch_layout.nb_channels <= 0)
        return fail(mediaError(MediaError::noSuchTrack, input.displayName() + ": Its sound track states no form"));
    decoder->m_rate = parameters.sample_rate;
    decoder->m_channelCount = parameters.ch_layout.nb_channels;
    decoder->m_origin = input.originTicks(streamIndex);
    const double tick = av_q2d(stream.time_base) * parameters.sample_rate;
    const bool isExact = stream.time_base.num == 1 && stream.time_base.den % parameters.sample_rate == 0;
    decoder->m_tick = isExact ? 0 : tick;
    decoder->m_end = statedEnd(input, stream);
    decoder->m_packetGrid = packetGridOf(parameters.codec_id);
    TRY(decoder->openCodec());
    return decoder;
}

Result<void> AudioDecoder::openInput() {
    TRY_LET(auto input, MovieInput::open(m_path, fileNameOf(m_path)));
    if (m_streamIndex < 0 || m_streamIndex >= input->streamCount() ||
        input->stream(m_streamIndex).codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
        return fail(mediaError(MediaError::noSuchTrack,
                               fileNameOf(m_path) + " has no sound track " + std::to_string(m_streamIndex)));
    m_input = std::move(input);
    m_input->readOnly(m_streamIndex);
    return {};
}

Result<void> AudioDecoder::openCodec() {
    const AVCodecParameters& parameters = *m_input->stream(m_streamIndex).codecpar;
    const std::string& name = m_input->displayName();
    const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
    if (codec == nullptr)
        return fail(mediaError(MediaError::noDecoder,
                               name + ": There is no decoder for " + avcodec_get_name(parameters.codec_id)));
    m_codec.reset(avcodec_alloc_context3(codec));
    if (const int answer = avcodec_parameters_to_context(m_codec.get(), &parameters); answer < 0)
        return fail(libavError(answer, name));
    // The codec cuts run-ins off and moves times by them, so it has to count in samples.
    m_codec->pkt_timebase = {1, m_rate};
    m_codec->thread_count = 1;
    if (const int answer = avcodec_open2(m_codec.get(), codec, nullptr); answer < 0)
        return fail(libavError(answer, name));
    return {};
}

Result<std::optional<DecodedSound>> AudioDecoder::next() {
    for (;;) {
        std::optional<DecodedSound> sound = std::move(m_waiting);
        m_waiting.reset();
        if (!sound) {
            TRY_LET(sound, decodeNext());
            if (!sound)
                return sound;
        }
        cutTo(*sound);
        if (sound->frameCount <= 0)
            continue;
        m_from = sound->position + sound->frameCount;
        m_isRunningIn = false;
        return sound;
    }
}

/// Leaves out what was given already, what lies before the wanted place, and what the file does not show.
void AudioDecoder::cutTo(DecodedSound& sound) const {
    const std::int64_t from = std::max({std::int64_t(0), m_from, m_start.value_or(0)});
    const std::int64_t early = std::clamp<std::int64_t>(from - sound.position, 0, sound.frameCount);
    sound.offset += int(early);
    sound.frameCount -= int(early);
    sound.position += early;
    if (m_end && sound.position < *m_end)
        sound.frameCount = int(std::min<std::int64_t>(sound.frameCount, *m_end - sound.position));
}

Result<std::optional<DecodedSound>> AudioDecoder::decodeNext() {
    for (;;) {
        TRY_LET(FramePtr frame, receive());
        if (!frame)
            return std::optional<DecodedSound>();
        if ((frame->flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame->decode_error_flags != 0) {
            m_isAfterLoss = true;
            continue;
        }
        if (frame->nb_samples <= 0 || frame->sample_rate <= 0)
            continue;
        frame = inFirstForm(std::move(frame));
        if (!frame) {
            m_isAfterLoss = true;
            continue;
        }
        if (frame->nb_samples <= 0)
            continue;
        const std::int64_t position = positionOf(*frame);
        m_expected = position + frame->nb_samples;
        m_isAfterLoss = false;
        if (!m_start) {
            m_start = position;
            // A run-in may have been cut off its front.
            m_packetEnd = *m_expected;
            if (m_packetGrid == 0)
                m_packetGrid = m_codec->frame_size > 0 ? m_codec->frame_size : frame->nb_samples;
        }
        const int count = frame->nb_samples;
        return DecodedSound{std::move(frame), 0, count, position};
    }
}

Result<FramePtr> AudioDecoder::receive() {
    FramePtr frame(av_frame_alloc());
    for (;;) {
        const int answer = avcodec_receive_frame(m_codec.get(), frame.get());
        if (answer >= 0)
            return frame;
        if (answer == AVERROR_EOF)
            return FramePtr();
        if (answer == AVERROR(ENOMEM))
            return fail(libavError(answer, m_input->displayName()));
        if (answer == AVERROR(EAGAIN))
            TRY(feed());
        else
            m_isAfterLoss = true;
    }
}

Result<void> AudioDecoder::feed() {
    if (!m_isInputAtEnd) {
        TRY_LET(const bool hasPacket, m_input->read(*m_packet));
        if (hasPacket) {
            if (m_packet->stream_index == m_streamIndex) {
                av_packet_rescale_ts(m_packet.get(), m_input->stream(m_streamIndex).time_base, {1, m_rate});
                // What the codec refuses is damaged: left out.
                if (avcodec_send_packet(m_codec.get(), m_packet.get()) < 0)
                    m_isAfterLoss = true;
            }
            av_packet_unref(m_packet.get());
            return {};
        }
        m_isInputAtEnd = true;
    }
    avcodec_send_packet(m_codec.get(), nullptr);
    return {};
}

FramePtr AudioDecoder::inFirstForm(FramePtr frame) {
    if (m_format == AV_SAMPLE_FMT_NONE)
        m_format = AVSampleFormat(frame->format);
    const SoundEnd form = soundEndOf(*frame);
    if (form.format == m_format && form.sampleRate == m_rate && form.channels.nb_channels == m_channelCount) {
        m_toFirstForm.reset();
        return frame;
    }
    const bool isSameAsBefore = m_toFirstForm && form.format == m_otherForm.format &&
                                form.sampleRate == m_otherForm.sampleRate &&
                                form.channels.nb_channels == m_otherForm.channels.nb_channels;
    SoundEnd first{m_format, m_rate, {}};
    av_channel_layout_default(&first.channels, m_channelCount);
    if (!isSameAsBefore) {
        Result<SwrPtr> made = makeSoundConversion(form, first, m_input->displayName());
        if (!made)
            return nullptr;
        m_toFirstForm = std::move(*made);
        m_otherForm = form;
        // Only its number of channels is looked at later; the rest may belong to the frame.
        m_otherForm.channels = AVChannelLayout{AV_CHANNEL_ORDER_UNSPEC, form.channels.nb_channels, {}, nullptr};
    }
    FramePtr converted(av_frame_alloc());
    converted->format = m_format;
    converted->sample_rate = m_rate;
    converted->ch_layout = first.channels;
    converted->pts = frame->pts;
    converted->best_effort_timestamp = frame->best_effort_timestamp;
    converted->nb_samples = swr_get_out_samples(m_toFirstForm.get(), frame->nb_samples);
    constexpr int mostSamples = 1 << 22;
    if (converted->nb_samples <= 0 || converted->nb_samples > mostSamples)
        return nullptr;
    int answer = av_frame_get_buffer(converted.get(), 0);
    if (answer >= 0)
        answer = swr_convert(m_toFirstForm.get(), converted->extended_data, converted->nb_samples,
                             const_cast<const std::uint8_t**>(frame->extended_data), frame->nb_samples);
    if (answer < 0)
        return nullptr;
    converted->nb_samples = answer;
    return converted;
}

std::int64_t AudioDecoder::positionOf(const AVFrame& frame) {
    std::int64_t stamped = frame.best_effort_timestamp != AV_NOPTS_VALUE ? frame.best_effort_timestamp : frame.pts;
    const std::int64_t origin = av_rescale_q(m_origin, m_input->stream(m_streamIndex).time_base, {1, m_rate});
    stamped = stamped == AV_NOPTS_VALUE ? farthest : av_sat_sub64(stamped, origin);
    const bool isStamped = std::abs(stamped) < farthest;
    if (!isStamped)
        return m_expected.value_or(m_start.value_or(0));
    // Some containers guess at the first packets behind a seek and know the later ones.
    if (!m_expected || m_isRunningIn)
        return settled(stamped);
    const std::int64_t gap = stamped - *m_expected;
    // A packet that was left out may be short; otherwise recorders stamp late and early by several milliseconds.
    const double tolerance =
        m_isAfterLoss ? std::max(2 * m_tick, 0.002 * m_rate) : std::max(2 * m_tick, 0.015 * m_rate);
    // Times that jump far back start anew (two files in one): the sound goes on.
    if (std::abs(double(gap)) <= tolerance || gap < -m_rate)
        return *m_expected;
    return settled(stamped);
}

/// Gives back what a coarse time lost, as far as the length of packets tells it.
std::int64_t AudioDecoder::settled(std::int64_t stamped) const {
    if (m_tick <= 0)
        return stamped;
    const double slack = m_tick + 1;
    const std::int64_t first = m_start.value_or(0);
    if (std::abs(double(stamped - first)) <= slack)
        return first;
    // A grid finer than the error tells nothing.
    if (double(m_packetGrid) < 1.2 * m_tick)
        return stamped;
    // Some muxers round up, others to the nearest: the middle of the two.
    const double likely = double(stamped - m_packetEnd) - m_tick / 4;
    const auto packets = std::int64_t(std::llround(likely / double(m_packetGrid)));
    const std::int64_t onGrid = m_packetEnd + packets * m_packetGrid;
    return std::abs(double(onGrid - stamped)) <= slack ? onGrid : stamped;
}

std::int64_t AudioDecoder::runIn() const {
    // Transforms overlap, MP3 borrows bits from many packets before, Opus and noise fillers have a memory.
    return isLossless(m_codec->codec_id) ? 0 : m_rate / 2;
}

Result<void> AudioDecoder::learnStart() {
    if (m_start)
        return {};
    TRY_LET(m_waiting, decodeNext());
    return {};
}

void AudioDecoder::forgetPosition() {
    avcodec_flush_buffers(m_codec.get());
    m_toFirstForm.reset();
    m_waiting.reset();
    m_expected.reset();
    m_isAfterLoss = false;
    m_isRunningIn = false;
    m_isInputAtEnd = false;
}

Result<void> AudioDecoder::seek(std::int64_t position) {
    TRY(learnStart());
    if (!m_start)
        return {};
    position = std::clamp<std::int64_t>(position, 0, farthest);
    // What lies just ahead is reached sooner by reading on.
    const std::int64_t reached = m_waiting ? m_waiting->position : m_expected.value_or(farthest);
    const bool isJustAhead = position >= reached && position - reached <= std::int64_t(m_rate) && position >= m_from;
    m_from = position;
    if (isJustAhead)
        return {};

    // Once it has seen the end, libav's Ogg reader gives wrong times to what lies on the last page.
    if (m_isInputAtEnd && m_input->isContainer("ogg"))
        TRY(openInput());
    const AVStream& stream = m_input->stream(m_streamIndex);
    constexpr int mostSteps = 8;
    std::int64_t back = runIn();
    for (int step = 0; step < mostSteps && position - back > *m_start; ++step) {
        const std::int64_t ticks = av_rescale_q_rnd(position - back, {1, m_rate}, stream.time_base, AV_ROUND_DOWN);
        TRY(m_input->seek(m_streamIndex, av_sat_add64(ticks, m_origin)));
        forgetPosition();
        m_isRunningIn = true;
        TRY_LET(m_waiting, decodeNext());
        if (m_waiting && m_waiting->position <= position - runIn() / 2)
            return {};
        back = std::max<std::int64_t>(m_rate, back * 4);
    }
    return rewind();
}

Result<void> AudioDecoder::rewind() {
    TRY(m_input->rewind(m_streamIndex));
    forgetPosition();
    // Some codecs keep the end of what they decoded last through a flush, and here no run-in covers it.
    return openCodec();
}

} // namespace keldra
