// A microphone that is a program: it shows up in PipeWire like any other, hears beeps at known moments and tells when.
// docs/test-devices.md says how to use it.

#include "devices/Program.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sched.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/latency-utils.h>
#include <vector>

namespace keldra::test {
namespace {

constexpr const char* usage =
    "usage: keldra_test_microphone [--name NODE] [--description TEXT] [--channels N] [--ppm FAST] [--every SECONDS]\n"
    "                              [--signal beeps|sine] [--quantum FRAMES] [--late MILLISECONDS]\n";
constexpr int rate = 48000;
constexpr double beepSeconds = 0.03;
constexpr double beepHertz = 1000;
constexpr double sineHertz = 480;
constexpr double loudness = 0.5;

class Microphone {
public:
    explicit Microphone(const Words& words)
        : m_channels(int(words.number("channels")))
        , m_rate(rate * (1 + words.number("ppm") * 1e-6))
        , m_beepPeriod(std::int64_t(std::llround(words.number("every") * m_rate)))
        , m_isSine(words.text("signal") == "sine")
        , m_quantum(int(words.number("quantum")))
        , m_latest(std::int64_t(words.number("late") * 1e6))
        , m_zero(hostNanoseconds())
        , m_node("Microphone", properties(words),
                 {.fill = [this](pw_buffer& buffer) { fill(buffer); },
                  .nextCycle = [this](bool isFirst) { return nextCycle(isFirst); },
                  .formatChosen = [](const spa_pod&) {}}) {}

    int run() {
        // A sound card is never late. Where this is not allowed, a busy machine makes a device that stutters.
        const sched_param prompt{20};
        (void)sched_setscheduler(0, SCHED_FIFO | SCHED_RESET_ON_FORK, &prompt);
        std::uint8_t bytes[2048];
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes, sizeof bytes);
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = rate;
        format.channels = std::uint32_t(m_channels);
        format.position[0] = m_channels == 1 ? SPA_AUDIO_CHANNEL_MONO : SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
        // The first frame of a block is as old as the block is long, as with a sound card.
        spa_latency_info latency{};
        latency.direction = SPA_DIRECTION_OUTPUT;
        latency.min_quantum = latency.max_quantum = 1;
        const spa_pod* params[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format),
                                   spa_latency_build(&builder, SPA_PARAM_Latency, &latency)};
        return m_node.run(params, 2);
    }

private:
    static pw_properties* properties(const Words& words) {
        const std::string latency = words.text("quantum") + "/48000";
        return pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CLASS, "Audio/Source", PW_KEY_NODE_NAME,
                                 words.text("name").c_str(), PW_KEY_NODE_DESCRIPTION, words.text("description").c_str(),
                                 PW_KEY_NODE_LATENCY, latency.c_str(), nullptr);
    }

    /// The host time at which that frame sounded.
    std::int64_t soundedAt(std::int64_t frame) const {
        return m_zero + std::int64_t(std::llround(double(frame) / m_rate * 1e9));
    }

    /// A block is handed over when its last frame has sounded, or a little late.
    std::int64_t nextCycle(bool isFirst) {
        if (isFirst)
            m_next = std::int64_t(double(hostNanoseconds() - m_zero) * 1e-9 * m_rate);
        if (const spa_io_position* position = m_node.position(); position != nullptr && position->clock.duration > 0)
            m_quantum = int(position->clock.duration);
        m_noise = m_noise * 6364136223846793005U + 1442695040888963407U;
        const std::int64_t late = m_latest > 0 ? std::int64_t(m_noise >> 33U) % m_latest : 0;
        return soundedAt(m_next + m_quantum) + late;
    }

    void fill(pw_buffer& buffer) {
        spa_data& data = buffer.buffer->datas[0];
        const auto stride = std::int32_t(std::size_t(m_channels) * sizeof(float));
        const auto count = std::min<std::int64_t>(m_quantum, data.maxsize / std::uint32_t(stride));
        auto* samples = static_cast<float*>(data.data);
        for (std::int64_t i = 0; i < count; ++i)
            std::fill_n(samples + i * m_channels, m_channels, sampleAt(m_next + i));
        if (!m_isSine)
            report(m_next, m_next + count);
        m_next += count;
        data.chunk->offset = 0;
        data.chunk->stride = stride;
        data.chunk->size = std::uint32_t(count * stride);
        if (spa_io_position* position = m_node.position()) {
            position->clock.nsec = std::uint64_t(hostNanoseconds());
            position->clock.position = std::uint64_t(m_next);
        }
    }

    float sampleAt(std::int64_t frame) const {
        const double turn = 2 * M_PI / m_rate;
        if (m_isSine)
            return float(loudness * std::sin(sineHertz * turn * double(frame)));
        const std::int64_t into = frame % m_beepPeriod;
        return frame >= m_beepPeriod && double(into) < beepSeconds * m_rate
                   ? float(loudness * std::cos(beepHertz * turn * double(into)))
                   : 0;
    }

    void report(std::int64_t begin, std::int64_t end) const {
        const std::int64_t beep = (begin + m_beepPeriod - 1) / m_beepPeriod * m_beepPeriod;
        if (beep >= end || beep == 0)
            return;
        std::printf("beep %lld\n", static_cast<long long>(soundedAt(beep) / 1000));
        std::fflush(stdout);
    }

    int m_channels;
    /// Frames a second of host time.
    double m_rate;
    std::int64_t m_beepPeriod;
    bool m_isSine;
    int m_quantum;
    /// How late a block comes at most, nanoseconds.
    std::int64_t m_latest;
    std::uint64_t m_noise = 1;
    /// When frame 0 sounded.
    std::int64_t m_zero;
    std::int64_t m_next = 0;
    DriverNode m_node;
};

} // namespace
} // namespace keldra::test

int main(int count, char** arguments) {
    using namespace keldra::test;
    const Words words(count, arguments, usage,
                      {{"name", "keldra-test-microphone"},
                       {"description", "KELDRA test microphone"},
                       {"channels", "1"},
                       {"ppm", "0"},
                       {"every", "1"},
                       {"signal", "beeps"},
                       {"quantum", "1024"},
                       {"late", "0"}});
    return Microphone(words).run();
}
