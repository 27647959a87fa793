#pragma once

#include <QList>

namespace keldra {

/// One straight piece of a fade. Times in seconds, gains from 0 to 1.
struct FadeCurveSegment {
    double start = 0;
    double duration = 0;
    double startGain = 0;
    double endGain = 0;
    friend bool operator==(const FadeCurveSegment&, const FadeCurveSegment&) = default;
};

/// A smooth fade (x²(3 - 2x)) of `duration` seconds from `start` on, as `steps` straight pieces: up from silence, or
/// down to it. Empty when there is nothing to fade: no step, no length, or a number that is not finite.
QList<FadeCurveSegment> fadeCurveSegments(bool isFadeIn, int steps, double start, double duration);

} // namespace keldra
