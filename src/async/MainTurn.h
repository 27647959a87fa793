#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"

#include <QCoroTask>

#include <memory>

namespace keldra {

/// The share of the main thread that a long piece of work may take before everything else there has its turn. A value:
/// each piece of work begins its own. Main thread.
///
/// if (turn.isOver())
///     co_await turn.next();
class MainTurn {
public:
    static constexpr Duration length = std::chrono::milliseconds(4);

    /// `main` must outlive all turns.
    MainTurn(Executor& main, std::shared_ptr<const HostClock> clock);

    void begin();
    bool isOver() const;
    /// Resumes in a later turn of the main loop, with the whole length before it. This object must outlive the task.
    QCoro::Task<> next();

private:
    Executor* m_main;
    std::shared_ptr<const HostClock> m_clock;
    MediaTime m_end;
};

} // namespace keldra
