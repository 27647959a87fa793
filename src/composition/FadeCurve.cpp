#include "composition/FadeCurve.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

double smoothstep(double x) {
    const double clamped = std::isfinite(x) ? std::clamp(x, 0.0, 1.0) : 0;
    return clamped * clamped * (3 - 2 * clamped);
}

} // namespace

QList<FadeCurveSegment> fadeCurveSegments(bool isFadeIn, int steps, double start, double duration) {
    const bool hasLength =
        std::isfinite(start) && std::isfinite(duration) && duration > 0 && std::isfinite(start + duration);
    if (!hasLength || steps < 1)
        return {};
    const auto gain = [&](double x) { return isFadeIn ? smoothstep(x) : 1 - smoothstep(x); };
    QList<FadeCurveSegment> segments;
    segments.reserve(steps);
    for (int i = 0; i < steps; ++i) {
        const double a = double(i) / steps;
        const double b = double(i + 1) / steps;
        const double begin = start + a * duration;
        segments.append({begin, start + b * duration - begin, gain(a), gain(b)});
    }
    return segments;
}

} // namespace keldra
