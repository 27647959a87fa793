#include "media/MonoResampler.h"

#include "media/SoundConversion.h"

#include <algorithm>

namespace keldra {

void MonoResampler::FreeConversion::operator()(SwrContext* context) const {
    swr_free(&context);
}

Result<std::unique_ptr<MonoResampler>> MonoResampler::make(int fromRate, int toRate, const std::string& subject) {
    constexpr int filterSize = 8;
    std::unique_ptr<MonoResampler> resampler(new MonoResampler);
    // Of one channel both forms look alike, and libav handles planes without a copy.
    SoundEnd from = soundEndOf({SampleKind::int16, fromRate, 1});
    SoundEnd to = soundEndOf({SampleKind::int16, toRate, 1});
    from.format = to.format = AV_SAMPLE_FMT_S16P;
    TRY_LET(SwrPtr made, makeSoundConversion(from, to, subject, filterSize));
    resampler->m_conversion.reset(made.release());
    return resampler;
}

Result<void> MonoResampler::resample(const std::int16_t* samples, std::int64_t count,
                                     std::vector<std::int16_t>& output) {
    constexpr std::int64_t mostAtOnce = 1 << 20;
    while (count > 0) {
        const int portion = int(std::min(count, mostAtOnce));
        const std::size_t before = output.size();
        const int room = std::max(0, swr_get_out_samples(m_conversion.get(), portion));
        output.resize(before + std::size_t(room));
        auto* out = reinterpret_cast<std::uint8_t*>(output.data() + before);
        const auto* in = reinterpret_cast<const std::uint8_t*>(samples);
        const int given = swr_convert(m_conversion.get(), &out, room, &in, portion);
        if (given < 0)
            return fail(libavError(given));
        output.resize(before + std::size_t(given));
        samples += portion;
        count -= portion;
    }
    return {};
}

Result<void> MonoResampler::drain(std::vector<std::int16_t>& output) {
    const std::size_t before = output.size();
    const int room = std::max(0, swr_get_out_samples(m_conversion.get(), 0)) + 64;
    output.resize(before + std::size_t(room));
    auto* out = reinterpret_cast<std::uint8_t*>(output.data() + before);
    const int given = swr_convert(m_conversion.get(), &out, room, nullptr, 0);
    output.resize(before + std::size_t(std::max(0, given)));
    if (const int answer = given < 0 ? given : swr_init(m_conversion.get()); answer < 0)
        return fail(libavError(answer));
    return {};
}

} // namespace keldra
