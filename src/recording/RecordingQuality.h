#pragma once

#include <cstdint>

namespace keldra {

/// How fine a recording is.
enum class RecordingQuality { high, medium, low };

/// Frames per second, on every capture path.
int framesPerSecond(RecordingQuality quality);

/// Bits per second for frames of that size in pixels. The frame rate does not enter: a quality buys bits per picture
/// area, and a screen seldom changes at its full rate.
std::int64_t averageBitRate(RecordingQuality quality, int width, int height);

} // namespace keldra
