#include "media/MovieMuxer.h"

#include "media/MediaError.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace keldra {
namespace {

/// Ticks per second in which the file states times; holds 24, 25, 30, 50, 60, 120 and 1/600 s exactly.
constexpr const char* timescale = "60000";
/// The same for an export, whose edit list also has to state the end of 48 kHz sound exactly.
constexpr const char* exportTimescale = "240000";

} // namespace

Result<std::unique_ptr<MovieMuxer>> MovieMuxer::open(OutputFile& file, Shape shape, std::int64_t indexBytes) {
    quietLibav();
    AVFormatContext* context = nullptr;
    const char* format = shape == Shape::mp4 ? "mp4" : "mov";
    // libav opens this address once more when it moves the index of an MP4.
    const std::string address = "file:" + file.path();
    if (const int answer = avformat_alloc_output_context2(&context, nullptr, format, address.c_str()); answer < 0)
        return fail(libavError(answer, fileNameOf(file.path())));
    context->pb = file.io();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    return std::unique_ptr<MovieMuxer>(new MovieMuxer(context, file, shape, indexBytes));
}

MovieMuxer::MovieMuxer(AVFormatContext* context, OutputFile& file, Shape shape, std::int64_t indexBytes)
    : m_context(context), m_file(file), m_shape(shape), m_indexBytes(indexBytes) {}

MovieMuxer::~MovieMuxer() {
    m_context->pb = nullptr;
    avformat_free_context(m_context);
}

Result<void> MovieMuxer::checked(int answer) {
    TRY(m_file.flush());
    if (answer < 0)
        return fail(libavError(answer, fileNameOf(m_file.path())));
    return {};
}

Result<AVStream*> MovieMuxer::addTrack(AVRational timeBase) {
    AVStream* stream = avformat_new_stream(m_context, nullptr);
    if (stream == nullptr)
        return fail(libavError(AVERROR(ENOMEM)));
    stream->time_base = timeBase;
    return stream;
}

void MovieMuxer::setTag(const char* name, const std::string& value) {
    av_dict_set(&m_context->metadata, name, value.c_str(), 0);
}

Result<void> MovieMuxer::begin() {
    AVDictionary* options = nullptr;
    switch (m_shape) {
    case Shape::growing:
        // The head waits for the first fragment: written at once it would forget how late a track starts.
        av_dict_set(&options, "movflags", "frag_custom+default_base_moof+delay_moov+use_metadata_tags", 0);
        break;
    case Shape::quickTime:
        av_dict_set_int(&options, "moov_size", m_indexBytes, 0);
        av_dict_set(&options, "movflags", "use_metadata_tags", 0);
        break;
    case Shape::mp4:
        av_dict_set(&options, "movflags", "faststart", 0);
        break;
    }
    // An export's frames come at a pace that its own time base holds exactly.
    if (m_shape != Shape::mp4)
        av_dict_set(&options, "video_track_timescale", timescale, 0);
    av_dict_set(&options, "movie_timescale", m_shape == Shape::mp4 ? exportTimescale : timescale, 0);
    const int answer = avformat_write_header(m_context, &options);
    av_dict_free(&options);
    return checked(answer);
}

Result<void> MovieMuxer::write(AVPacket& packet, AVRational timeBase) {
    av_packet_rescale_ts(&packet, timeBase, m_context->streams[packet.stream_index]->time_base);
    const int answer = av_write_frame(m_context, &packet);
    if (answer < 0 || m_context->pb->error < 0)
        return checked(answer);
    return {};
}

Result<void> MovieMuxer::closeFragment() {
    // The first time this writes only the head.
    int answer = av_write_frame(m_context, nullptr);
    if (answer >= 0 && !m_hasIndex)
        answer = av_write_frame(m_context, nullptr);
    m_hasIndex = true;
    // Left alone, libav would take the next packet's time to be the end of the last one, whose length it had to guess.
    av_opt_set(m_context->priv_data, "movflags", "+frag_discont", 0);
    return checked(answer);
}

Result<void> MovieMuxer::finish() {
    return checked(av_write_trailer(m_context));
}

} // namespace keldra
