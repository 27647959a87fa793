#pragma once

#include <cstdint>
#include <vector>

namespace keldra {

/// Follows the clock of a sound device: when, on the host clock, did its frames sound?
///
/// A device counts its own frames, a little too fast or too slow, and what tells us their host times comes late now and
/// then. So each report moves the estimate of time and rate only as far as its weight against all the earlier ones (a
/// Kalman filter over time and rate), and one that lies far off waits for others to confirm it: confirmed, frames were
/// lost in between, and the count goes on after a hole.
///
/// Frames are those of `rate` a second by the device; host times are seconds. A value.
class DeviceClock {
public:
    explicit DeviceClock(int rate) : m_rate(rate) {}

    struct Report {
        /// The graph's count at the block's first frame; it goes on over what nobody delivered.
        std::int64_t ticks = 0;
        std::int64_t frameCount = 0;
        /// When the first frame sounded.
        double heardAt = 0;
    };
    enum class Verdict {
        steady,   ///< the block follows the one before
        doubtful, ///< too far off to tell; ask again with the next block, and keep this one until then
        jumped,   ///< frames were lost before this block, or before the first of those that were doubtful
    };

    /// Blocks come in order. A block is counted with this call, whatever the verdict. The first ones are doubtful: a
    /// quarter of a second tells better than any one of them when they sounded.
    Verdict hear(const Report& report);
    /// No more blocks come that could tell: what was heard so far has to do.
    void settle();

    /// The host time of that frame, counted from the first block's first one without what was lost. After a jump it
    /// holds from there on.
    double hostTimeOf(std::int64_t frame) const;
    /// How much longer the device's second is than the host's: -0.0002 for a device that is 200 ppm fast.
    double rateError() const { return m_drift; }
    /// Frames counted so far; the next block's first one.
    std::int64_t frameCount() const { return m_counted; }

private:
    void follow(std::int64_t frame, double heardAt);
    bool explains(std::int64_t lostTicks, double off) const;
    bool isSettled() const { return m_frame >= 0; }

    int m_rate;
    /// The estimate: when frame `m_frame` sounded, and the rate's error; with their uncertainty.
    std::int64_t m_frame = -1;
    double m_time = 0;
    double m_drift = 0;
    double m_timeVariance = 0;
    double m_covariance = 0;
    double m_driftVariance = 0;

    std::int64_t m_counted = 0;
    std::int64_t m_nextTicks = 0;

    /// When frame 0 sounded, by each of the first reports.
    std::vector<double> m_beginnings;

    // While there is doubt.
    bool m_isInDoubt = false;
    double m_doubtSince = 0;
    int m_doubts = 0;
    double m_leastOff = 0;
};

} // namespace keldra
