#include "media/OrdinaryCopy.h"

#include "media/MediaError.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace keldra {
namespace {

/// One packet as the source's index tells of it.
struct Sample {
    int track = 0;
    std::int64_t offset = 0;
    int byteCount = 0;
    std::int64_t time = 0;
    std::int64_t duration = 0;
    bool isKey = false;
};

std::vector<Sample> samplesOf(MovieInput& input, int track, MediaTime end) {
    AVStream& stream = input.stream(track);
    std::vector<Sample> samples;
    const int count = avformat_index_get_entries_count(&stream);
    samples.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(&stream, i);
        if (!samples.empty())
            samples.back().duration = entry.timestamp - samples.back().time;
        samples.push_back({track, entry.pos, entry.size, entry.timestamp, 0, (entry.flags & AVINDEX_KEYFRAME) != 0});
    }
    if (samples.empty())
        return samples;
    Sample& last = samples.back();
    const AVCodecParameters& codec = *stream.codecpar;
    if (codec.codec_type == AVMEDIA_TYPE_AUDIO && codec.block_align > 0)
        last.duration = last.byteCount / codec.block_align;
    else
        last.duration =
            std::max<std::int64_t>(1, end.isNumeric() ? ticksAtOrBefore(end, stream.time_base) - last.time : 0);
    return samples;
}

/// Of all tracks, as they lie in the file.
std::vector<Sample> samplesOf(MovieInput& input, MediaTime end) {
    std::vector<Sample> samples;
    for (int track = 0; track < input.streamCount(); ++track) {
        const std::vector<Sample> more = samplesOf(input, track, end);
        samples.insert(samples.end(), more.begin(), more.end());
    }
    std::stable_sort(samples.begin(), samples.end(),
                     [](const Sample& a, const Sample& b) { return a.offset < b.offset; });
    return samples;
}

/// Has the muxer note the packets; what it writes for them does not arrive.
Result<void> tell(MovieMuxer& muxer, MovieInput& input, const std::vector<Sample>& samples) {
    int largest = 0;
    for (const Sample& sample : samples)
        largest = std::max(largest, sample.byteCount);
    std::vector<std::uint8_t> blank(std::size_t(largest) + AV_INPUT_BUFFER_PADDING_SIZE);
    const PacketPtr packet(av_packet_alloc());
    for (const Sample& sample : samples) {
        packet->data = blank.data();
        packet->size = sample.byteCount;
        packet->stream_index = sample.track;
        packet->pts = packet->dts = sample.time;
        packet->duration = sample.duration;
        packet->flags = sample.isKey ? AV_PKT_FLAG_KEY : 0;
        TRY(muxer.write(*packet, input.stream(sample.track).time_base));
    }
    return {};
}

struct Descriptor {
    explicit Descriptor(const std::string& path) : number(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~Descriptor() {
        if (number >= 0)
            ::close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    const int number;
};

Result<void> copyBytes(const std::vector<Sample>& samples, int source, OutputFile& target, std::int64_t offset) {
    for (std::size_t i = 0; i < samples.size();) {
        const std::int64_t begin = samples[i].offset;
        std::int64_t end = begin;
        while (i < samples.size() && samples[i].offset == end)
            end += samples[i++].byteCount;
        TRY(target.copyFrom(source, begin, end - begin, offset));
        offset += end - begin;
    }
    return {};
}

} // namespace

Result<void> copyPackets(MovieInput& input, const std::string& source, MovieMuxer& muxer, OutputFile& target,
                         MediaTime end) {
    const std::vector<Sample> samples = samplesOf(input, end);
    const Descriptor descriptor(source);
    if (descriptor.number < 0)
        return fail(systemError(errno, input.displayName()));
    TRY(target.leaveOut(true));
    const std::int64_t begin = target.position();
    TRY(tell(muxer, input, samples));
    TRY(target.leaveOut(false));
    std::int64_t expected = 0;
    for (const Sample& sample : samples)
        expected += sample.byteCount;
    // A muxer that put anything between the packets would have moved them from where they are copied to.
    if (target.position() - begin != expected)
        return fail(mediaError(MediaError::notAMovie, input.displayName() + ": its packets could not be copied"));
    TRY(copyBytes(samples, descriptor.number, target, begin));
    return muxer.finish();
}

} // namespace keldra
