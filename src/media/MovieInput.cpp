#include "media/MovieInput.h"

#include "media/MediaError.h"
#include "media/MovieMuxer.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

extern "C" {
#include <libavutil/avstring.h>
}

namespace keldra {
namespace {

/// Containers of picture and sound, and single pictures. Never lists that name other files, subtitles or text.
constexpr const char* containers = "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpegts,mpeg,mpegvideo,flv,asf,ogg,mxf,"
                                   "wav,w64,aiff,flac,mp3,aac,ac3,caf,h264,hevc,obu,ivf,nut,yuv4mpegpipe,"
                                   "gif,apng,image2,png_pipe,jpeg_pipe,webp_pipe,bmp_pipe,tiff_pipe";

Error notAMovie(const std::string& name, const std::string& why) {
    return mediaError(MediaError::notAMovie, name + " is not a movie that can be read: " + why);
}

Result<void> checkFile(const std::string& path, const std::string& name) {
    struct stat status {};
    // A FIFO would wait for its writer, so look before opening.
    if (::stat(path.c_str(), &status) != 0)
        return fail(systemError(errno, name));
    if (S_ISDIR(status.st_mode))
        return fail(systemError(EISDIR, name));
    if (::access(path.c_str(), R_OK) != 0)
        return fail(systemError(errno, name));
    if (!S_ISREG(status.st_mode))
        return fail(notAMovie(name, "It is not a regular file"));
    if (status.st_size == 0)
        return fail(notAMovie(name, "The file is empty"));
    return {};
}

bool isMedia(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    const bool isCover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    return type == AVMEDIA_TYPE_AUDIO || (type == AVMEDIA_TYPE_VIDEO && !isCover);
}

/// Looks into the streams as far as their heads do not say enough; nothing is decoded that is larger than we take.
int findStreamInfo(AVFormatContext& context) {
    // One dictionary for each stream known so far, as libav wants them.
    std::vector<AVDictionary*> options(context.nb_streams);
    for (AVDictionary*& option : options)
        av_dict_set_int(&option, "max_pixels", mostPicturePixels, 0);
    const int found = avformat_find_stream_info(&context, options.empty() ? nullptr : options.data());
    for (AVDictionary*& option : options)
        av_dict_free(&option);
    return found;
}

/// A QuickTime index tells where every picture lies; a file that ends before its last one was not copied whole. A movie
/// in fragments, such as a killed recording, counts no pictures in its head and is read as far as it goes.
Result<void> checkWhole(AVFormatContext& context, const std::string& name) {
    if (std::strstr(context.iformat->name, "mov") == nullptr)
        return {};
    const std::int64_t size = avio_size(context.pb);
    for (unsigned index = 0; index < context.nb_streams; ++index) {
        AVStream* stream = context.streams[index];
        const int count = stream->nb_frames > 0 ? avformat_index_get_entries_count(stream) : 0;
        const AVIndexEntry* last = count > 0 ? avformat_index_get_entry(stream, count - 1) : nullptr;
        if (last != nullptr && last->pos + last->size > size)
            return fail(mediaError(MediaError::notAMovie, name + " is cut off: it should have at least " +
                                                              std::to_string(last->pos + last->size) +
                                                              " bytes and has " + std::to_string(size) +
                                                              "; copy it again"));
    }
    return {};
}

} // namespace

MovieInput::MovieInput(AVFormatContext* context, std::string displayName)
    : m_context(context), m_displayName(std::move(displayName)) {}

MovieInput::~MovieInput() {
    avformat_close_input(&m_context);
}

Result<std::unique_ptr<MovieInput>> MovieInput::open(const std::string& path, const std::string& displayName) {
    quietLibav();
    TRY(checkFile(path, displayName));

    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", containers, 0);
    // A picture's name is a name, not a pattern of many names.
    av_dict_set(&options, "pattern_type", "none", 0);
    // WAV: bytes a packet. Its own 4096 make reading dear.
    av_dict_set(&options, "max_size", "65536", 0);
    AVFormatContext* context = nullptr;
    // The prefix keeps libav from reading a name such as "a:b.mov" as an address.
    const int opened = avformat_open_input(&context, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (opened < 0) {
        // A format outside the list comes back as an invalid argument.
        const int reason = opened == AVERROR(EINVAL) ? AVERROR_INVALIDDATA : opened;
        Error error = notAMovie(displayName, libavWords(reason));
        error.info = libavError(reason).info;
        return fail(std::move(error));
    }
    std::unique_ptr<MovieInput> input(new MovieInput(context, displayName));
    // libav looks for other codecs disguised as PCM, in five megabytes when it is let.
    if (input->isContainer("wav"))
        context->probesize = 1 << 17;
    if (const int found = findStreamInfo(*context); found < 0)
        return fail(notAMovie(displayName, libavWords(found)));
    TRY(checkWhole(*context, displayName));
    for (int index = 0; index < input->streamCount(); ++index)
        if (isMedia(input->stream(index)))
            return input;
    return fail(notAMovie(displayName, "It holds neither picture nor sound"));
}

std::int64_t MovieInput::originTicks(int index) const {
    const bool startsAnywhere = (m_context->iformat->flags & AVFMT_TS_DISCONT) != 0 || isContainer("mp3");
    if (!startsAnywhere || m_context->start_time == AV_NOPTS_VALUE)
        return 0;
    return av_rescale_q(m_context->start_time, AV_TIME_BASE_Q, m_context->streams[index]->time_base);
}

bool MovieInput::isStillPicture() const {
    const std::string_view format = m_context->iformat->name;
    return format == "image2" || format.ends_with("_pipe");
}

bool MovieInput::isContainer(const char* family) const {
    return av_match_name(family, m_context->iformat->name) > 0;
}

std::string MovieInput::tag(const char* name) const {
    const AVDictionaryEntry* entry = av_dict_get(m_context->metadata, name, nullptr, 0);
    return entry != nullptr ? entry->value : "";
}

double MovieInput::nominalFrameRate(int index) {
    // Some containers count in milliseconds and state no rate; nothing is shown at more than this.
    constexpr double highest = 240;
    if (const int stated = std::atoi(tag(frameRateTag).c_str()); stated > 0 && stated <= highest)
        return stated;
    AVStream& described = stream(index);
    const AVRational average = described.avg_frame_rate;
    const AVRational guessed = av_guess_frame_rate(m_context, &described, nullptr);
    for (const AVRational rate : {guessed, average})
        if (rate.num > 0 && rate.den > 0 && av_q2d(rate) <= highest)
            return av_q2d(rate);
    return 0;
}

void MovieInput::readOnly(int index) {
    for (int other = 0; other < streamCount(); ++other)
        stream(other).discard = other == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

Result<bool> MovieInput::read(AVPacket& packet) {
    for (;;) {
        const int answer = av_read_frame(m_context, &packet);
        if (answer >= 0)
            return true;
        if (answer == AVERROR(EAGAIN))
            continue;
        if (answer == AVERROR_EOF || answer == AVERROR_INVALIDDATA)
            return false;
        return fail(libavError(answer, m_displayName));
    }
}

Result<void> MovieInput::seek(int index, std::int64_t ticks) {
    if (av_seek_frame(m_context, index, ticks, AVSEEK_FLAG_BACKWARD) >= 0)
        return {};
    // Nothing at or before it, or no way to tell.
    return rewind(index);
}

Result<void> MovieInput::rewind(int index) {
    const bool hasIndex = avformat_index_get_entries_count(m_context->streams[index]) > 0;
    const bool startsAnywhere = (m_context->iformat->flags & AVFMT_TS_DISCONT) != 0;
    if (hasIndex && !startsAnywhere) {
        const AVIndexEntry* first = avformat_index_get_entry(m_context->streams[index], 0);
        if (av_seek_frame(m_context, index, first->timestamp, AVSEEK_FLAG_BACKWARD) >= 0)
            return {};
    }
    int answer = av_seek_frame(m_context, -1, 0, AVSEEK_FLAG_BYTE);
    if (answer < 0)
        answer = avformat_seek_file(m_context, -1, INT64_MIN, 0, INT64_MAX, 0);
    if (answer < 0)
        return fail(libavError(answer, m_displayName));
    return {};
}

} // namespace keldra
