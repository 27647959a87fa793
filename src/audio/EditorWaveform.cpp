#include "audio/EditorWaveform.h"

#include <algorithm>
#include <cmath>

namespace keldra {

// The parameter is the source's length, which may differ from what the buckets span.
float EditorWaveform::peak(double from, double to, double sourceDuration) const {
    if (samples.empty() || !(sourceDuration > 0) || !(from < to))
        return 0;
    const auto count = double(samples.size());
    const double begin = std::clamp(from, 0.0, sourceDuration) / sourceDuration * count;
    const double end = std::clamp(to, 0.0, sourceDuration) / sourceDuration * count;
    const double first = std::min(std::floor(begin), count - 1);
    const double last = std::clamp(std::ceil(end), first + 1, count);
    return *std::max_element(samples.begin() + std::ptrdiff_t(first), samples.begin() + std::ptrdiff_t(last));
}

} // namespace keldra
