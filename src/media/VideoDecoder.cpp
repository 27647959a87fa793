#include "media/VideoDecoder.h"

#include "media/MediaError.h"

#include <algorithm>

extern "C" {
#include <libavutil/common.h>
}

namespace keldra {

Result<std::unique_ptr<VideoDecoder>> VideoDecoder::open(const std::string& path, int streamIndex, int threadCount) {
    const std::string name = fileNameOf(path);
    TRY_LET(auto input, MovieInput::open(path, name));
    if (streamIndex < 0 || streamIndex >= input->streamCount() ||
        input->stream(streamIndex).codecpar->codec_type != AVMEDIA_TYPE_VIDEO)
        return fail(mediaError(MediaError::noSuchTrack, name + " has no picture track " + std::to_string(streamIndex)));
    const AVStream& stream = input->stream(streamIndex);

    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr)
        return fail(mediaError(MediaError::noDecoder,
                               name + ": There is no decoder for " + avcodec_get_name(stream.codecpar->codec_id)));
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (const int answer = avcodec_parameters_to_context(context.get(), stream.codecpar); answer < 0)
        return fail(libavError(answer, name));
    context->max_pixels = mostPicturePixels;
    context->pkt_timebase = stream.time_base;
    context->thread_count = std::max(1, threadCount);
    // Without this the H.264 decoder loses the frames after the last key frame of a file with open groups when it was
    // started there. With it the frames that it could not rebuild come out flagged, and next() leaves them out.
    if (stream.codecpar->codec_id == AV_CODEC_ID_H264)
        context->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
    if (const int answer = avcodec_open2(context.get(), codec, nullptr); answer < 0)
        return fail(libavError(answer, name));

    std::unique_ptr<VideoDecoder> decoder(new VideoDecoder);
    decoder->m_origin = input->originTicks(streamIndex);
    decoder->m_input = std::move(input);
    decoder->m_streamIndex = streamIndex;
    decoder->m_codec = std::move(context);
    decoder->m_packet.reset(av_packet_alloc());
    decoder->m_input->readOnly(streamIndex);
    return decoder;
}

AVRational VideoDecoder::sampleAspectRatio(const AVFrame& frame) {
    const AVRational stated = m_input->stream(m_streamIndex).sample_aspect_ratio;
    const AVRational ratio = stated.num > 0 ? stated : frame.sample_aspect_ratio;
    return ratio.num > 0 && ratio.den > 0 ? ratio : AVRational{1, 1};
}

Result<FramePtr> VideoDecoder::next() {
    FramePtr frame(av_frame_alloc());
    for (;;) {
        const int answer = avcodec_receive_frame(m_codec.get(), frame.get());
        if (answer == AVERROR_EOF)
            return FramePtr();
        if (answer == AVERROR(EAGAIN)) {
            TRY(feed());
            continue;
        }
        if (answer == AVERROR(ENOMEM))
            return fail(libavError(answer, m_input->displayName()));
        if (answer < 0)
            continue;
        const bool isDamaged = (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame->decode_error_flags != 0;
        const std::int64_t stamp = frame->best_effort_timestamp;
        if (isDamaged || stamp == AV_NOPTS_VALUE || (m_firstWhole != AV_NOPTS_VALUE && stamp < m_firstWhole))
            continue;
        frame->pts = av_sat_sub64(stamp, m_origin);
        if (m_lastShown != AV_NOPTS_VALUE && frame->pts <= m_lastShown)
            continue;
        m_lastShown = frame->pts;
        return frame;
    }
}

Result<void> VideoDecoder::feed() {
    if (!m_isInputAtEnd) {
        TRY_LET(const bool hasPacket, m_input->read(*m_packet));
        if (hasPacket) {
            const bool isKey = (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
            if (m_packet->stream_index == m_streamIndex && (isKey || !m_isAwaitingKey)) {
                if (m_isAwaitingKey)
                    m_firstWhole = m_packet->pts;
                m_isAwaitingKey = false;
                m_readTicks = m_packet->dts != AV_NOPTS_VALUE ? m_packet->dts : m_packet->pts;
                m_codec->skip_frame = isPassedOver(*m_packet) ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
                // What the codec refuses is a damaged picture: left out.
                avcodec_send_packet(m_codec.get(), m_packet.get());
            }
            av_packet_unref(m_packet.get());
            return {};
        }
        m_isInputAtEnd = true;
    }
    avcodec_send_packet(m_codec.get(), nullptr);
    return {};
}

bool VideoDecoder::isReachedByDecodingOn(std::int64_t ticks) {
    if (m_lastShown == AV_NOPTS_VALUE || ticks < m_lastShown || m_readTicks == AV_NOPTS_VALUE)
        return false;
    // A few frames are decoded sooner than a codec is emptied and started again.
    if (ticks - m_lastShown <= av_rescale_q(1, {1, 4}, timeBase()))
        return true;
    const AVIndexEntry* key = avformat_index_get_entry_from_timestamp(&m_input->stream(m_streamIndex), ticks + m_origin,
                                                                      AVSEEK_FLAG_BACKWARD);
    return key != nullptr && key->timestamp <= m_readTicks;
}

bool VideoDecoder::isEvenlyPacedBefore(std::int64_t ticks) {
    AVStream& stream = m_input->stream(m_streamIndex);
    const int key = av_index_search_timestamp(&stream, ticks + m_origin, AVSEEK_FLAG_BACKWARD);
    if (key < 0)
        return false;
    std::int64_t shortest = INT64_MAX;
    std::int64_t longest = 0;
    const int count = avformat_index_get_entries_count(&stream);
    for (int at = key + 1; at < count; ++at) {
        const std::int64_t from = avformat_index_get_entry(&stream, at - 1)->timestamp;
        const std::int64_t to = avformat_index_get_entry(&stream, at)->timestamp;
        shortest = std::min(shortest, to - from);
        longest = std::max(longest, to - from);
        if (to > ticks + m_origin)
            break;
    }
    // An index of key frames alone tells nothing of the frames between.
    const bool hasEveryFrame = longest > 0 && av_rescale_q(longest, stream.time_base, {1, 5}) == 0;
    return hasEveryFrame && longest * 2 <= shortest * 3;
}

void VideoDecoder::passOverBefore(std::int64_t ticks) {
    const bool isSafe = ticks != AV_NOPTS_VALUE && isEvenlyPacedBefore(ticks);
    m_soughtTicks = isSafe ? av_sat_add64(ticks, m_origin) : AV_NOPTS_VALUE;
}

bool VideoDecoder::isPassedOver(const AVPacket& packet) const {
    return m_soughtTicks != AV_NOPTS_VALUE && packet.pts != AV_NOPTS_VALUE && packet.duration > 0 &&
           packet.pts + 2 * packet.duration <= m_soughtTicks;
}

void VideoDecoder::forgetPosition() {
    avcodec_flush_buffers(m_codec.get());
    m_isInputAtEnd = false;
    m_readTicks = AV_NOPTS_VALUE;
    m_lastShown = AV_NOPTS_VALUE;
    m_firstWhole = AV_NOPTS_VALUE;
}

Result<void> VideoDecoder::startFrom(std::int64_t ticks) {
    TRY(m_input->seek(m_streamIndex, ticks));
    forgetPosition();
    m_isAwaitingKey = true;
    return {};
}

Result<void> VideoDecoder::startFromTheBeginning() {
    TRY(m_input->rewind(m_streamIndex));
    forgetPosition();
    // As when the file was opened: there is nothing earlier to find.
    m_isAwaitingKey = false;
    return {};
}

Result<FramePtr> VideoDecoder::seek(std::int64_t ticks) {
    const AVStream& stream = m_input->stream(m_streamIndex);
    const std::int64_t first = stream.start_time == AV_NOPTS_VALUE ? m_origin : std::min(stream.start_time, m_origin);
    // Containers seek by decoding times, or only nearly: the frame found may be shown after the one wanted. Then go
    // further back.
    constexpr int mostSteps = 10;
    std::int64_t back = 0;
    for (int step = 0; step < mostSteps; ++step) {
        const std::int64_t from = av_sat_sub64(av_sat_add64(ticks, m_origin), back);
        back = back == 0 ? av_rescale_q(1, {1, 2}, stream.time_base) : back * 4;
        if (from <= first)
            break;
        TRY(startFrom(from));
        TRY_LET(FramePtr frame, next());
        if (frame && frame->pts <= ticks)
            return frame;
    }
    TRY(startFromTheBeginning());
    return next();
}

} // namespace keldra
