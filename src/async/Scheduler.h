#pragma once

#include "base/Executor.h"

#include <QCoroTask>

namespace keldra {

/// Sleeps and repeats on the main thread, at exact due times.
class Scheduler {
public:
    virtual ~Scheduler() = default;
    /// Runs the work once, `delay` from now.
    [[nodiscard]] virtual Timer after(Duration delay, Work work) = 0;
    /// As Executor::every().
    [[nodiscard]] virtual Timer every(Duration period, Work work) = 0;
    /// Resumes after `delay`. A task that is dropped before is not resumed.
    QCoro::Task<> sleep(Duration delay);
};

} // namespace keldra
