#include "media/Asset.h"

#include "media/MediaError.h"
#include "media/MovieInput.h"

#include <algorithm>

extern "C" {
#include <libavutil/common.h>
}

namespace keldra {
namespace {

/// How long a single picture lies on a fresh timeline.
constexpr MediaTimeRange stillRange{MediaTime::zero(), MediaTime(5, 1)};

MediaTimeRange timeRangeOf(MovieInput& input, const AVStream& stream) {
    if (input.isStillPicture())
        return stillRange;
    std::int64_t start = 0;
    if (stream.start_time != AV_NOPTS_VALUE)
        start = av_sat_sub64(stream.start_time, input.originTicks(stream.index));
    std::int64_t duration = stream.duration;
    if (duration == AV_NOPTS_VALUE && input.duration() != AV_NOPTS_VALUE)
        duration = av_rescale_q(input.duration(), AV_TIME_BASE_Q, stream.time_base);
    if (duration == AV_NOPTS_VALUE)
        duration = 0;
    // What lies before zero (a codec's run-in) is not on the file's line.
    const std::int64_t end = std::max<std::int64_t>(0, av_sat_add64(start, duration));
    const std::int64_t shownStart = std::max<std::int64_t>(0, start);
    return {timeOf(shownStart, stream.time_base),
            timeOf(std::max<std::int64_t>(0, end - shownStart), stream.time_base)};
}

/// ISO/IEC 14496-12, 6.2.2: nine numbers, 16.16 but for the last column.
AffineTransform preferredTransformOf(const AVStream& stream) {
    const auto* matrix =
        reinterpret_cast<const std::int32_t*>(av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
    if (matrix == nullptr)
        return {};
    const auto fixed = [matrix](int index) { return matrix[index] / 65536.0; };
    return {fixed(0), fixed(1), fixed(3), fixed(4), fixed(6), fixed(7)};
}

AssetTrack describe(MovieInput& input, AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    AssetTrack track;
    track.index = stream.index;
    track.timeRange = timeRangeOf(input, stream);
    track.codecName = avcodec_get_name(parameters.codec_id);
    if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        track.kind = MediaKind::audio;
        track.sampleRate = parameters.sample_rate;
        track.channelCount = parameters.ch_layout.nb_channels;
        return track;
    }
    track.kind = MediaKind::video;
    const AVRational stated = stream.sample_aspect_ratio;
    const AVRational aspect = stated.num > 0 ? stated : parameters.sample_aspect_ratio;
    track.naturalSize = {double(squarePixelWidth(parameters.width, aspect)), double(parameters.height)};
    track.preferredTransform = preferredTransformOf(stream);
    track.nominalFrameRate = input.nominalFrameRate(stream.index);
    track.isStill = input.isStillPicture();
    return track;
}

bool isWanted(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO)
        return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0 && parameters.width > 0 && parameters.height > 0;
    return parameters.codec_type == AVMEDIA_TYPE_AUDIO && parameters.sample_rate > 0 &&
           parameters.ch_layout.nb_channels > 0;
}

} // namespace

Result<AssetPtr> Asset::open(const std::string& path) {
    TRY_LET(const auto input, MovieInput::open(path, fileNameOf(path)));
    std::shared_ptr<Asset> asset(new Asset);
    asset->m_path = path;
    for (int index = 0; index < input->streamCount(); ++index)
        if (isWanted(input->stream(index))) {
            asset->m_tracks.push_back(describe(*input, input->stream(index)));
            asset->m_duration = std::max(asset->m_duration, asset->m_tracks.back().timeRange.end());
        }
    if (asset->m_tracks.empty())
        return fail(
            mediaError(MediaError::notAMovie,
                       fileNameOf(path) + " is not a movie that can be read: It holds neither picture nor sound"));
    return AssetPtr(asset);
}

void Asset::load(const std::string& path, Executor& worker, Executor& answer, Completion<AssetPtr> done) {
    worker.post([path, &answer, done = std::move(done)]() mutable {
        answer.post([done = std::move(done), result = Asset::open(path)] { done(result); });
    });
}

std::vector<AssetTrack> Asset::tracks(MediaKind kind) const {
    std::vector<AssetTrack> found;
    std::copy_if(m_tracks.begin(), m_tracks.end(), std::back_inserter(found),
                 [kind](const AssetTrack& track) { return track.kind == kind; });
    return found;
}

} // namespace keldra
