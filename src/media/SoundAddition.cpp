#include "media/SoundAddition.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace keldra {
namespace {

/// A sample as a whole number, with the highest byte's sign.
std::int32_t readWhole(const std::byte* bytes, int size) {
    std::uint32_t value = 0;
    std::memcpy(reinterpret_cast<std::byte*>(&value) + (4 - size), bytes, std::size_t(size));
    return std::int32_t(value) >> (8 * (4 - size));
}

void addWhole(std::byte* bytes, int size, float added) {
    const double fullScale = double(1 << (8 * size - 1));
    const double sum = readWhole(bytes, size) + double(added) * fullScale;
    const auto cut = std::int32_t(std::clamp(std::round(sum), -fullScale, fullScale - 1));
    std::memcpy(bytes, &cut, std::size_t(size));
}

void addFloat(std::byte* bytes, float added) {
    float value = 0;
    std::memcpy(&value, bytes, sizeof value);
    value += added;
    std::memcpy(bytes, &value, sizeof value);
}

} // namespace

void addSamples(std::byte* interleaved, const AudioFormat& format, const std::vector<float>& added) {
    for (const float sample : added)
        for (int channel = 0; channel < format.channelCount; ++channel) {
            // What is untouched stays as it is to the bit.
            if (sample != 0) {
                if (format.kind == SampleKind::float32)
                    addFloat(interleaved, sample);
                else
                    addWhole(interleaved, format.bytesPerSample(), sample);
            }
            interleaved += format.bytesPerSample();
        }
}

} // namespace keldra
