#include "audio/MonoSum.h"

#include <algorithm>

namespace keldra {
namespace {

using Limits = std::numeric_limits<std::int64_t>;

} // namespace

Result<void> MonoSum::startAt(Lane& lane, const AudioBuffer& sound) {
    const int rate = sound.format().sampleRate;
    if (lane.resampler) {
        std::vector<std::int16_t> rest;
        TRY(lane.resampler->drain(rest));
        append(lane, std::move(rest));
    } else {
        TRY_LET(lane.resampler, MonoResampler::make(rate, WaveformPeaks::sampleRate, m_fileName));
        lane.sampleRate = rate;
    }
    const auto position = std::int64_t(sound.time().seconds() * WaveformPeaks::sampleRate + 0.5);
    lane.reached = std::max(lane.reached, position);
    return {};
}

Result<void> MonoSum::add(std::size_t track, const AudioBuffer& sound) {
    Lane& lane = m_lanes[track];
    const std::int64_t position = sound.time().value();
    if (position != lane.expected)
        TRY(startAt(lane, sound));
    lane.expected = position + sound.frameCount();
    std::vector<std::int16_t> resampled;
    TRY(lane.resampler->resample(sound.samples<std::int16_t>(), sound.frameCount(), resampled));
    append(lane, std::move(resampled));
    return {};
}

Result<void> MonoSum::finish(std::size_t track) {
    Lane& lane = m_lanes[track];
    std::vector<std::int16_t> rest;
    if (lane.resampler)
        TRY(lane.resampler->drain(rest));
    append(lane, std::move(rest));
    lane.reached = Limits::max();
    sumUp();
    return {};
}

void MonoSum::append(Lane& lane, std::vector<std::int16_t> samples) {
    // A track without sound has reached nothing yet.
    if (samples.empty())
        return;
    const std::int64_t position = lane.reached;
    lane.reached += std::int64_t(samples.size());
    if (m_lanes.size() == 1) {
        m_peaks.add(position, samples.data(), std::int64_t(samples.size()));
    } else {
        lane.pieces.push_back({position, std::move(samples)});
        sumUp();
    }
}

void MonoSum::sumUp() {
    constexpr std::int64_t portion = 4096;
    std::int64_t frontier = Limits::max();
    for (const Lane& lane : m_lanes)
        frontier = std::min(frontier, lane.reached);
    std::vector<int> sum;
    std::vector<std::int16_t> limited;
    for (std::int64_t done = Limits::min();;) {
        std::int64_t start = Limits::max();
        for (const Lane& lane : m_lanes)
            if (!lane.pieces.empty())
                start = std::min(start, std::max(done, lane.pieces.front().position));
        if (start >= frontier)
            return;
        const std::int64_t end = std::min(frontier, start + portion);
        sum.assign(std::size_t(end - start), 0);
        for (Lane& lane : m_lanes) {
            for (const Piece& piece : lane.pieces)
                for (std::int64_t at = std::max(start, piece.position); at < std::min(end, piece.end()); ++at)
                    sum[std::size_t(at - start)] += piece.samples[std::size_t(at - piece.position)];
            while (!lane.pieces.empty() && lane.pieces.front().end() <= end)
                lane.pieces.pop_front();
        }
        limited.resize(sum.size());
        std::transform(sum.begin(), sum.end(), limited.begin(),
                       [](int value) { return std::int16_t(std::clamp(value, -32768, 32767)); });
        m_peaks.add(start, limited.data(), end - start);
        done = end;
    }
}

} // namespace keldra
