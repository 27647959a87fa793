#include "media/EncoderChoice.h"

#include "base/Log.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

namespace keldra {
namespace {

struct Named {
    const char* name;
    EncoderChoice choice;
    std::vector<H264Implementation> tried;
};

const Named choices[] = {
    {"auto", EncoderChoice::automatic, {H264Implementation::nvenc, H264Implementation::vaapi, H264Implementation::qsv}},
    {"x264", EncoderChoice::x264, {}},
    {"vaapi", EncoderChoice::vaapi, {H264Implementation::vaapi}},
    {"nvenc", EncoderChoice::nvenc, {H264Implementation::nvenc}},
    {"qsv", EncoderChoice::qsv, {H264Implementation::qsv}},
};

/// Encodes a few grey frames. Errors: the codec's words.
Result<void> tryOut(const H264Settings& settings) {
    TRY_LET(const auto encoder, H264Encoder::open(settings));
    PixelBuffer grey = PixelBuffer::allocate(PixelFormat::i420, settings.width, settings.height);
    for (int plane = 0; plane < PixelBuffer::planeCount(grey.format()); ++plane)
        for (int y = 0; y < grey.planeHeight(plane); ++y)
            std::fill_n(grey.mutableRow(plane, y), grey.planeWidth(plane), std::uint8_t(128));
    int packetCount = 0;
    const auto count = [&](AVPacket&) -> Result<void> {
        ++packetCount;
        return {};
    };
    constexpr int frameCount = 3;
    for (int frame = 0; frame < frameCount; ++frame)
        TRY(encoder->encode(grey, frame, false, count));
    TRY(encoder->drain(count));
    if (packetCount != frameCount)
        return fail(Error{"H264Encoder", 1, "It lost frames.", {}});
    return {};
}

} // namespace

std::optional<EncoderChoice> encoderChoice(const std::string& name) {
    const auto found =
        std::find_if(std::begin(choices), std::end(choices), [&](const Named& entry) { return entry.name == name; });
    return found == std::end(choices) ? std::nullopt : std::optional(found->choice);
}

H264Settings withProvenEncoder(EncoderChoice choice, H264Settings settings) {
    const auto entry = std::find_if(std::begin(choices), std::end(choices),
                                    [&](const Named& candidate) { return candidate.choice == choice; });
    std::string reason;
    for (const H264Implementation implementation : entry->tried) {
        settings.implementation = implementation;
        const Result<void> tried = tryOut(settings);
        if (tried)
            return settings;
        reason = tried.error().message;
    }
    if (!entry->tried.empty())
        logLine("[KELDRA Export]",
                "encoder " + std::string(entry->name) + " cannot be used (" + reason + "); libx264 encodes instead");
    settings.implementation = H264Implementation::x264;
    return settings;
}

} // namespace keldra
