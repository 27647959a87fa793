#include "media/PresetTrial.h"

#include "base/HostClock.h"
#include "imaging/PixelBuffer.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace keldra {
namespace {

constexpr std::array<const char*, 2> finerPresets{"veryfast", "superfast"};
constexpr const char* plainestPreset = "ultrafast";

/// How much faster than needed an encoder must be on an idle machine: the programs that are recorded want the same
/// cores, and nothing may be lost when the whole screen moves.
constexpr double headroom = 5;

/// For each preset, its opening included; the last picture may take a little longer.
const MediaTime trialLength(75, 1000);

std::optional<std::string> forcedPreset() {
    const char* forced = std::getenv("KELDRA_X264_PRESET");
    if (forced == nullptr || *forced == '\0')
        return std::nullopt;
    return forced;
}

/// A picture whose lower half is texture that moves on with every call.
class MovingPicture {
public:
    MovingPicture(int width, int height) : m_picture(PixelBuffer::allocate(PixelFormat::i420, width, height)) {
        std::minstd_rand random(1);
        for (int i = 0; i < 2 * width; ++i)
            m_texture.push_back(std::uint8_t(64 + random() % 128));
        for (int plane = 0; plane < 3; ++plane)
            for (int y = 0; y < m_picture.planeHeight(plane); ++y)
                std::memset(m_picture.mutableRow(plane, y), 128, std::size_t(m_picture.planeWidth(plane)));
    }
    const PixelBuffer& next() {
        ++m_number;
        const int width = m_picture.width();
        for (int y = m_picture.height() / 2; y < m_picture.height(); ++y)
            std::memcpy(m_picture.mutableRow(0, y), m_texture.data() + (y / 16 * 37 + m_number * 5) % width,
                        std::size_t(width));
        return m_picture;
    }
    int number() const { return m_number; }

private:
    PixelBuffer m_picture;
    std::vector<std::uint8_t> m_texture;
    int m_number = 0;
};

/// Frames a second; 0 when the encoder cannot be had.
double speedOf(H264Settings settings, const std::string& preset, MovingPicture& picture) {
    const SystemHostClock clock;
    const MediaTime end = clock.now() + trialLength;
    settings.preset = preset;
    const auto encoder = H264Encoder::open(settings);
    if (!encoder)
        return 0;
    const MediaTime begin = clock.now();
    MediaTime now = begin;
    int count = 0;
    do {
        const Result<void> encoded = (*encoder)->encode(picture.next(), std::int64_t(picture.number()) * 1000, false,
                                                        [](AVPacket&) { return Result<void>(); });
        if (!encoded)
            return 0;
        ++count;
        now = clock.now();
    } while (now < end);
    return count / (now - begin).seconds();
}

} // namespace

std::string choosePreset(double frameRate, const std::function<double(const std::string&)>& speed) {
    for (const char* preset : finerPresets)
        if (speed(preset) >= frameRate * headroom)
            return preset;
    return plainestPreset;
}

std::string tryPresets(const H264Settings& settings) {
    if (const auto forced = forcedPreset())
        return *forced;
    MovingPicture picture(settings.width, settings.height);
    return choosePreset(av_q2d(settings.frameRate),
                        [&](const std::string& preset) { return speedOf(settings, preset, picture); });
}

std::string untriedPreset() {
    return forcedPreset().value_or(plainestPreset);
}

} // namespace keldra
