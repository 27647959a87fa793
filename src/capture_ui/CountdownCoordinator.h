#pragma once

#include <QCoroTask>

namespace keldra {

/// Counts down over the whole desktop; it cannot be cancelled. Main thread.
class CountdownCoordinator {
public:
    virtual ~CountdownCoordinator() = default;
    /// Resumes when that many seconds have gone by, at once when there are none.
    virtual QCoro::Task<> run(int seconds) = 0;
};

} // namespace keldra
