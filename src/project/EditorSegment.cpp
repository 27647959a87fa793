#include "project/EditorSegment.h"

#include "project/Clean.h"

namespace keldra {
namespace {

double wantedFade(const std::optional<double>& seconds) {
    return seconds && isPositiveFinite(*seconds) ? *seconds : 0;
}

} // namespace

FadeLengths normalizedFades(const EditorSegment& segment) {
    if (!isPositiveFinite(segment.duration))
        return {};
    const double fadeIn = wantedFade(segment.fadeInDuration);
    const double fadeOut = wantedFade(segment.fadeOutDuration);
    if (fadeIn + fadeOut <= segment.duration)
        return {fadeIn, fadeOut};
    // Relative to the longer fade, so that a sum of huge values does not overflow.
    const double longer = std::max(fadeIn, fadeOut);
    const double inShare = fadeIn / longer;
    const double outShare = fadeOut / longer;
    const double fittedIn = segment.duration * inShare / (inShare + outShare);
    return {fittedIn, segment.duration - fittedIn};
}

} // namespace keldra
