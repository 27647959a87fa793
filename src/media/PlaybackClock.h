#pragma once

#include "base/MediaTime.h"

namespace keldra {

/// Where on the time line a player is: it moves from an anchor at a rate. Seconds of the time line; host times of
/// HostClock. A value.
struct PlaybackClock {
    MediaTime anchorHost = MediaTime::zero();
    double anchorSeconds = 0;
    /// Negative runs backwards, 0 stands.
    double rate = 0;

    double secondsAt(MediaTime host) const { return anchorSeconds + rate * (host - anchorHost).seconds(); }
};

} // namespace keldra
