#pragma once

#include <cstdint>

// Rows of one plane of a 4:2:0 picture, mixed as plain numbers. Its numbers are sums of what red, green and blue weigh,
// so mixing them mixes the colours. Products are divided by 255 and rounded to nearest.

namespace keldra {

/// Lays the source over the target, weakened by one coverage value per sample.
void blendPlaneCovered(std::uint8_t* target, const std::uint8_t* source, const std::uint8_t* coverage, int width);

/// Lays one value over the target, weakened by one coverage value per sample.
void blendValueCovered(std::uint8_t* target, std::uint8_t value, const std::uint8_t* coverage, int width);

} // namespace keldra
