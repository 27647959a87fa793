#pragma once

#include "base/Executor.h"

#include <chrono>
#include <optional>

namespace keldra {

/// Decides when a changing picture is taken: at once when the last one is a whole interval old, else when it will be.
///
/// Due times stay on their grid: a picture taken late does not shift the next one, so a picture that stands for an
/// interval is not missed. Time that passed without changes is saved, up to one interval, and spent in small steps on
/// taking pictures early: a source with our own rate is soon met right after each change. So a stretch of time holds at
/// most one picture more than the rate gives. One thread.
class CapturePacer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit CapturePacer(Duration interval) : m_interval(interval), m_saved(interval) {}

    /// What would be taken now differs from what was taken last.
    void changed(TimePoint now);
    bool isPending() const { return m_due.has_value(); }
    /// When to take the next picture; nothing while nothing changes.
    std::optional<TimePoint> due() const { return m_due; }
    /// A picture is taken, because it was due.
    void taken(TimePoint now);

private:
    Duration m_interval;
    Duration m_saved;
    std::optional<TimePoint> m_lastDue;
    std::optional<TimePoint> m_due;
};

} // namespace keldra
