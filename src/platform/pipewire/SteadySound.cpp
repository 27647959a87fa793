#include "platform/pipewire/SteadySound.h"

#include "base/Log.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace keldra {
namespace {

/// What is handed on at a time.
constexpr std::int64_t deliveredFrames = SteadySound::sampleRate / 50;
/// What stands at the wrong place is brought to the right one in about so many seconds...
constexpr double pullSeconds = 2;
/// ...but no faster than nobody hears.
constexpr double fastestPull = 1000e-6;
/// libswresample takes a rate's correction as so many samples more in so many.
constexpr int correctionSpan = 1'000'000'000;

void putInt24(std::byte* target, float sample) {
    constexpr double full = 1 << 23;
    const auto value = std::int32_t(std::clamp(std::nearbyint(double(sample) * full), -full, full - 1));
    for (int i = 0; i < 3; ++i)
        target[i] = std::byte(std::uint32_t(value) >> (8 * i) & 0xffU);
}

} // namespace

void SteadySound::SwrDelete::operator()(SwrContext* context) const {
    swr_free(&context);
}

SteadySound::SteadySound(int channelCount, Deliver deliver)
    : m_channelCount(channelCount), m_deliver(std::move(deliver)) {}

SteadySound::~SteadySound() = default;

void SteadySound::hear(const DeviceClock::Report& report, std::vector<float> samples) {
    const std::int64_t firstFrame = m_clock.frameCount();
    const DeviceClock::Verdict verdict = m_clock.hear(report);
    m_kept.push_back({firstFrame, std::move(samples)});
    if (verdict == DeviceClock::Verdict::doubtful)
        return;
    if (verdict == DeviceClock::Verdict::jumped)
        end();
    for (const Block& block : m_kept)
        feed(block);
    m_kept.clear();
    deliverFrom(deliveredFrames);
}

void SteadySound::breakOff() {
    m_clock.settle();
    for (const Block& block : m_kept)
        feed(block);
    m_kept.clear();
    end();
    m_clock = DeviceClock(sampleRate);
}

void SteadySound::begin(std::int64_t firstFrame) {
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, m_channelCount);
    SwrContext* context = nullptr;
    int answer = swr_alloc_set_opts2(&context, &layout, AV_SAMPLE_FMT_FLT, sampleRate, &layout, AV_SAMPLE_FMT_FLT,
                                     sampleRate, 0, nullptr);
    m_resampler.reset(context);
    if (answer >= 0) {
        // Between equal rates it would otherwise copy, and know one phase only.
        av_opt_set_int(context, "flags", SWR_FLAG_RESAMPLE, 0);
        av_opt_set_int(context, "exact_rational", 0, 0);
        av_opt_set_int(context, "linear_interp", 1, 0);
        answer = swr_init(context);
    }
    if (answer < 0) {
        m_resampler.reset();
        logLine("[KELDRA Mic]", "libswresample refuses to correct a clock; this sound is lost");
        return;
    }
    const std::int64_t place = std::llround(placeOf(firstFrame));
    m_toSkip = std::max<std::int64_t>(0, m_next - place);
    m_next = std::max(m_next, place);
}

void SteadySound::feed(const Block& block) {
    if (!m_resampler)
        begin(block.firstFrame);
    if (!m_resampler)
        return;
    const std::int64_t skipped = std::min(m_toSkip, framesIn(block));
    m_toSkip -= skipped;
    if (skipped == framesIn(block))
        return;
    steer(block.firstFrame + skipped);
    convert(block.samples.data() + skipped * m_channelCount, framesIn(block) - skipped);
}

/// Sets the rate at which this frame and those behind it come to stand where they sounded.
void SteadySound::steer(std::int64_t firstFrame) {
    constexpr std::int64_t finely = 1000;
    const double inside = double(swr_get_delay(m_resampler.get(), finely * sampleRate)) / finely;
    const double reached = double(m_next) + double(m_ready.size()) / m_channelCount + inside;
    const double behind = placeOf(firstFrame) - reached;
    const double pull = std::clamp(behind / (pullSeconds * sampleRate), -fastestPull, fastestPull);
    const double more = (m_clock.rateError() + pull) * correctionSpan;
    swr_set_compensation(m_resampler.get(), int(std::lround(more)), correctionSpan);
}

/// No samples at all ask for what the resampler still holds.
void SteadySound::convert(const float* samples, std::int64_t frameCount) {
    const int room = swr_get_out_samples(m_resampler.get(), int(frameCount));
    const std::size_t filled = m_ready.size();
    m_ready.resize(filled + std::size_t(std::max(0, room)) * std::size_t(m_channelCount));
    auto* target = reinterpret_cast<std::uint8_t*>(m_ready.data() + filled);
    const auto* source = reinterpret_cast<const std::uint8_t*>(samples);
    const int made =
        swr_convert(m_resampler.get(), &target, room, samples != nullptr ? &source : nullptr, int(frameCount));
    m_ready.resize(filled + std::size_t(std::max(0, made)) * std::size_t(m_channelCount));
}

void SteadySound::deliverFrom(std::int64_t fewest) {
    const auto count = std::int64_t(m_ready.size()) / m_channelCount;
    if (count == 0 || count < fewest)
        return;
    AudioBuffer sound = AudioBuffer::allocate(format(), count, MediaTime(m_next, sampleRate));
    std::byte* target = sound.mutableBytes();
    for (const float sample : m_ready) {
        putInt24(target, sample);
        target += 3;
    }
    m_next += count;
    m_ready.clear();
    m_deliver(std::move(sound));
}

void SteadySound::end() {
    if (m_resampler)
        convert(nullptr, 0);
    m_resampler.reset();
    deliverFrom(0);
}

} // namespace keldra
