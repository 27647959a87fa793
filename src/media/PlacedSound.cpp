#include "media/PlacedSound.h"

#include "media/MediaError.h"
#include "media/SoundConversion.h"

#include <algorithm>
#include <numeric>

namespace keldra {
namespace {

/// Source samples fed at a time.
constexpr std::int64_t portion = 2048;
/// Samples at the lower rate that the resampling filter looks back on, twice over.
constexpr std::int64_t filterReach = 64;

/// Of offset * factor.
std::int64_t floored(MediaTime offset, std::int64_t factor) {
    __extension__ using Wide = __int128;
    const Wide numerator = Wide(offset.value()) * factor;
    return std::int64_t(numerator / offset.timescale() - (numerator % offset.timescale() < 0 ? 1 : 0));
}

std::int64_t floorDivided(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

std::int64_t nearest(MediaTime offset, std::int64_t factor) {
    return floorDivided(floored(offset, 2 * factor) + 1, 2);
}

} // namespace

void PlacedSound::FreeConversion::operator()(SwrContext* context) const {
    swr_free(&context);
}

PlacedSound::PlacedSound(std::unique_ptr<SourceSound> source, MediaTime offset, const AudioFormat& format)
    : m_source(std::move(source)), m_format(format) {
    const int common = std::gcd(m_source->sampleRate(), m_format.sampleRate);
    m_step = m_source->sampleRate() / common;
    m_steps = m_format.sampleRate / common;
    setOffset(offset);
}

PlacedSound::~PlacedSound() = default;

void PlacedSound::setOffset(MediaTime offset) {
    // Rounded to the nearest a piece that starts between two frames could lose its first sample.
    const std::int64_t phase =
        isOneForOne() ? floored(offset, m_format.sampleRate) : nearest(offset, m_source->sampleRate() * m_steps);
    m_isStarted = m_isStarted && phase == m_phase;
    m_phase = phase;
}

/// The conversion gives a frame for every m_step / m_steps of a source sample, counted from the first it is fed. So it
/// is fed from a sample so far back that one of its frames falls on `first`, and those before are dropped; that also
/// gives its filter the sound before.
Result<void> PlacedSound::start(std::int64_t first) {
    if (m_source->sampleRate() <= 0)
        return fail(mediaError(MediaError::noSuchTrack, fileNameOf(m_source->asset()->path()) + " has no sound"));
    const SoundEnd from = soundEndOf({SampleKind::float32, m_source->sampleRate(), m_source->channelCount()});
    TRY_LET(SwrPtr made, makeSoundConversion(from, soundEndOf(m_format), fileNameOf(m_source->asset()->path())));
    m_conversion.reset(made.release());

    const std::int64_t wanted = m_phase + first * m_step;
    const std::int64_t warmUp = isOneForOne() ? 0 : filterReach * std::max(std::int64_t(1), m_steps / m_step + 1);
    std::int64_t dropped = warmUp;
    while ((wanted - dropped * m_step) % m_steps != 0)
        dropped += 1;
    m_nextSource = floorDivided(wanted - dropped * m_step, m_steps);
    m_ready.clear();
    m_readyFrom = first - dropped;
    m_isStarted = true;
    return {};
}

Result<void> PlacedSound::feed() {
    const int channels = m_format.channelCount;
    m_input.resize(std::size_t(portion * m_source->channelCount()));
    TRY(m_source->read(m_nextSource, portion, m_input.data()));
    m_nextSource += portion;
    const int room = swr_get_out_samples(m_conversion.get(), int(portion));
    const std::size_t before = m_ready.size();
    m_ready.resize(before + std::size_t(std::max(0, room)) * std::size_t(channels));
    auto* output = reinterpret_cast<std::uint8_t*>(m_ready.data() + before);
    const auto* input = reinterpret_cast<const std::uint8_t*>(m_input.data());
    const int given = swr_convert(m_conversion.get(), &output, room, &input, int(portion));
    if (given < 0)
        return fail(libavError(given, fileNameOf(m_source->asset()->path())));
    m_ready.resize(before + std::size_t(given) * std::size_t(channels));
    return {};
}

Result<void> PlacedSound::read(std::int64_t first, std::int64_t count, float* frames) {
    const int channels = m_format.channelCount;
    if (isOneForOne() && m_source->channelCount() == channels)
        return m_source->read(first + m_phase, count, frames);

    const auto readyEnd = [&] { return m_readyFrom + std::int64_t(m_ready.size()) / channels; };
    // A little ahead is reached by reading on.
    const bool isReached = m_isStarted && first >= m_readyFrom && first - readyEnd() <= m_format.sampleRate / 10;
    if (!isReached)
        TRY(start(first));
    while (count > 0) {
        const std::int64_t dropped = std::min(first, readyEnd()) - m_readyFrom;
        m_ready.erase(m_ready.begin(), m_ready.begin() + dropped * channels);
        m_readyFrom += dropped;
        const std::int64_t taken = m_readyFrom == first ? std::min(count, readyEnd() - first) : 0;
        std::copy_n(m_ready.begin(), taken * channels, frames);
        frames += taken * channels;
        first += taken;
        count -= taken;
        if (count > 0)
            TRY(feed());
    }
    return {};
}

} // namespace keldra
