#pragma once

#include <QUuid>

namespace keldra {

/// The point that stays in place while the picture grows: fractions of the recording's rectangle, from its top left.
struct ZoomFocus {
    double x = 0.5;
    double y = 0.5;
    friend bool operator==(const ZoomFocus&, const ZoomFocus&) = default;
};

/// A stretch of the timeline in which the recording is magnified. Times are seconds of the timeline; blocks do not move
/// with clips.
struct ZoomBlock {
    QUuid id;
    double timelineStart = 0;
    double duration = 0;
    /// Magnification at full zoom, used within 1 to 5.
    double scale = 2;
    ZoomFocus focus;
    /// Seconds of zooming in at the head and out at the tail; used up to half the duration.
    double rampDuration = 0.6;
    friend bool operator==(const ZoomBlock&, const ZoomBlock&) = default;
};

} // namespace keldra
