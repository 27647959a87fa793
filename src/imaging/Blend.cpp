#include "imaging/Blend.h"

#include "imaging/Kernel.h"

#include <cstring>

namespace keldra {
namespace {

/// a * b / 255, rounded to nearest, for a, b up to 255.
inline std::uint16_t product(std::uint16_t a, std::uint16_t b) {
    const auto sum = std::uint16_t(a * b + 128);
    return std::uint16_t((sum + (sum >> 8)) >> 8);
}

inline std::uint8_t capped(std::uint16_t value) {
    return std::uint8_t(value > 255 ? 255 : value);
}

} // namespace

KELDRA_ROW_KERNEL void fillRow(std::uint8_t* target, PremultipliedColor color, int width) {
    std::uint32_t pixel;
    std::memcpy(&pixel, &color, sizeof pixel);
    auto* pixels = reinterpret_cast<std::uint32_t*>(target);
    for (int x = 0; x < width; ++x)
        pixels[x] = pixel;
}

KELDRA_ROW_KERNEL void blendRow(std::uint8_t* __restrict target, const std::uint8_t* __restrict source, int width) {
    for (int x = 0; x < width; ++x) {
        const auto kept = std::uint16_t(255 - source[4 * x + 3]);
        for (int channel = 0; channel < 4; ++channel) {
            const int at = 4 * x + channel;
            target[at] = capped(std::uint16_t(source[at] + product(target[at], kept)));
        }
    }
}

KELDRA_ROW_KERNEL void blendRowCovered(std::uint8_t* __restrict target, const std::uint8_t* __restrict source,
                                       const std::uint8_t* __restrict coverage, int width) {
    for (int x = 0; x < width; ++x) {
        const std::uint16_t weight = coverage[x];
        const auto kept = std::uint16_t(255 - product(source[4 * x + 3], weight));
        for (int channel = 0; channel < 4; ++channel) {
            const int at = 4 * x + channel;
            target[at] = capped(std::uint16_t(product(source[at], weight) + product(target[at], kept)));
        }
    }
}

KELDRA_ROW_KERNEL void blendColorCovered(std::uint8_t* __restrict target, PremultipliedColor color,
                                         const std::uint8_t* __restrict coverage, int width) {
    const std::uint16_t components[4] = {color.blue, color.green, color.red, color.alpha};
    for (int x = 0; x < width; ++x) {
        const std::uint16_t weight = coverage[x];
        const auto kept = std::uint16_t(255 - product(color.alpha, weight));
        for (int channel = 0; channel < 4; ++channel) {
            const int at = 4 * x + channel;
            target[at] = capped(std::uint16_t(product(components[channel], weight) + product(target[at], kept)));
        }
    }
}

KELDRA_ROW_KERNEL void scaleCoverage(std::uint8_t* __restrict target, const std::uint8_t* __restrict coverage,
                                     std::uint8_t factor, int width) {
    for (int x = 0; x < width; ++x)
        target[x] = std::uint8_t(product(coverage[x], factor));
}

KELDRA_ROW_KERNEL bool isOpaque(const std::uint8_t* row, int width) {
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(row);
    std::uint32_t common = 0xff000000u;
    for (int x = 0; x < width; ++x)
        common &= pixels[x];
    return common == 0xff000000u;
}

} // namespace keldra
