#include "recording/RecordingQuality.h"

#include <algorithm>

namespace keldra {
namespace {

struct Row {
    int framesPerSecond;
    double bitsPerPixel;
    std::int64_t minimumBitRate;
};

Row rowOf(RecordingQuality quality) {
    switch (quality) {
    case RecordingQuality::high:
        return {60, 5.0, 6'000'000};
    case RecordingQuality::medium:
        return {30, 2.8, 3'500'000};
    case RecordingQuality::low:
        return {24, 1.4, 1'800'000};
    }
    return {};
}

} // namespace

int framesPerSecond(RecordingQuality quality) {
    return rowOf(quality).framesPerSecond;
}

std::int64_t averageBitRate(RecordingQuality quality, int width, int height) {
    const Row row = rowOf(quality);
    return std::max(row.minimumBitRate, std::int64_t(double(width) * height * row.bitsPerPixel));
}

} // namespace keldra
