#pragma once

#include "async/Scheduler.h"

namespace keldra {

/// The scheduler of Qt's main loop, on the host clock (CLOCK_MONOTONIC). Main thread only, while a QCoreApplication
/// lives.
///
/// A QTimer counts whole milliseconds, which would make 1/120 s into 125 Hz; this one waits on kernel timers.
class MainScheduler final : public Scheduler {
public:
    Timer after(Duration delay, Work work) override;
    Timer every(Duration period, Work work) override;
};

} // namespace keldra
