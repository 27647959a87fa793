#include "imaging/PlaneBlend.h"

#include "imaging/Kernel.h"

namespace keldra {
namespace {

/// (a * weight + b * (255 - weight)) / 255, rounded to nearest.
inline std::uint8_t mix(std::uint16_t a, std::uint16_t b, std::uint16_t weight) {
    const auto sum = std::uint16_t(a * weight + b * (255 - weight) + 128);
    return std::uint8_t((sum + (sum >> 8)) >> 8);
}

} // namespace

KELDRA_ROW_KERNEL void blendPlaneCovered(std::uint8_t* __restrict target, const std::uint8_t* __restrict source,
                                         const std::uint8_t* __restrict coverage, int width) {
    for (int x = 0; x < width; ++x)
        target[x] = mix(source[x], target[x], coverage[x]);
}

KELDRA_ROW_KERNEL void blendValueCovered(std::uint8_t* __restrict target, std::uint8_t value,
                                         const std::uint8_t* __restrict coverage, int width) {
    for (int x = 0; x < width; ++x)
        target[x] = mix(value, target[x], coverage[x]);
}

} // namespace keldra
