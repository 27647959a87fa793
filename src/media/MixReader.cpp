#include "media/MixReader.h"

#include <algorithm>
#include <cassert>

namespace keldra {
namespace {

/// Two ends of a cut are rounded each for itself to a project's ticks of 1/60000 s.
bool isWithinRounding(MediaTime a, MediaTime b) {
    constexpr MediaTime slack(3, 120000);
    return a - b <= slack && b - a <= slack;
}

} // namespace

MixReader::MixReader(std::shared_ptr<const Composition> composition, std::optional<AudioMix> mix, Options options)
    : m_composition(std::move(composition))
    , m_mix(std::move(mix))
    , m_format{SampleKind::float32, options.sampleRate, options.channelCount}
    , m_frameCount(firstSampleAt(m_composition->duration(), options.sampleRate)) {
    for (const auto& track : m_composition->tracks())
        if (track->kind() == MediaKind::audio && !track->segments().empty())
            m_lanes.push_back(laneOf(*track));
}

MixReader::Lane MixReader::laneOf(const CompositionTrack& track) const {
    Lane lane;
    lane.trackID = track.trackID();
    MediaTime lastEnd = MediaTime::invalid();
    for (const CompositionSegment& segment : track.segments()) {
        const MediaTimeRange range = segment.targetRange();
        const MediaTime offset = segment.source.start - segment.target;
        const std::int64_t end = firstSampleAt(range.end(), m_format.sampleRate);
        Run* last = lane.runs.empty() ? nullptr : &lane.runs.back();
        const bool playsOn = last != nullptr && range.start == lastEnd && last->trackIndex == segment.trackIndex &&
                             last->asset->path() == segment.asset->path() && isWithinRounding(offset, last->offset);
        if (playsOn)
            last->end = end;
        else
            lane.runs.push_back(
                {segment.asset, segment.trackIndex, offset, firstSampleAt(range.start, m_format.sampleRate), end});
        lastEnd = range.end();
    }
    return lane;
}

void MixReader::seek(MediaTime time) {
    m_position = std::clamp<std::int64_t>(firstSampleAt(time, m_format.sampleRate), 0, m_frameCount);
}

Result<AudioBuffer> MixReader::next(std::int64_t atMost) {
    const std::int64_t count = std::clamp<std::int64_t>(m_frameCount - m_position, 0, atMost);
    const MediaTime time(m_position, m_format.sampleRate);
    if (count == 0)
        return AudioBuffer();
    AudioBuffer sum = AudioBuffer::allocate(m_format, count, time);
    float* samples = sum.mutableSamples<float>();
    const std::int64_t sampleCount = count * m_format.channelCount;
    for (Lane& lane : m_lanes) {
        m_laneFrames.assign(std::size_t(sampleCount), 0.0F);
        TRY(readLane(lane, count, m_laneFrames.data()));
        if (const AudioMixParameters* parameters = m_mix ? m_mix->parametersOf(lane.trackID) : nullptr)
            parameters->apply(m_laneFrames.data(), m_format.channelCount, count, m_position, m_format.sampleRate);
        for (std::int64_t i = 0; i < sampleCount; ++i)
            samples[i] += m_laneFrames[std::size_t(i)];
    }
    m_position += count;
    return sum;
}

/// Leaves what no run fills as it is.
Result<void> MixReader::readLane(Lane& lane, std::int64_t count, float* frames) {
    const std::int64_t end = m_position + count;
    auto run = std::partition_point(lane.runs.begin(), lane.runs.end(),
                                    [&](const Run& candidate) { return candidate.end <= m_position; });
    for (; run != lane.runs.end() && run->first < end; ++run) {
        const std::int64_t from = std::max(run->first, m_position);
        const std::int64_t until = std::min(run->end, end);
        if (until <= from)
            continue;
        place(lane, *run);
        TRY(lane.sound->read(from, until - from, frames + (from - m_position) * m_format.channelCount));
    }
    return {};
}

void MixReader::place(Lane& lane, const Run& run) const {
    const SourceSound* open = lane.sound ? &lane.sound->source() : nullptr;
    if (open != nullptr && open->trackIndex() == run.trackIndex && open->asset()->path() == run.asset->path())
        lane.sound->setOffset(run.offset);
    else
        lane.sound = std::make_unique<PlacedSound>(std::make_unique<SourceSound>(run.asset, run.trackIndex), run.offset,
                                                   m_format);
}

} // namespace keldra
