#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"

#include <QObject>

#include <memory>

namespace keldra {

/// The main thread as an executor: what is posted runs in later turns of Qt's main loop. Made on the main thread; it
/// must outlive everything that posts. It has no bound.
class MainQueue final : public Executor {
public:
    explicit MainQueue(std::shared_ptr<Scheduler> scheduler) : m_scheduler(std::move(scheduler)) {}

    void post(Work work) override;
    bool tryPost(Work work) override;
    void sync(const Work& work) override;
    /// Main thread only.
    Timer every(Duration period, Work work) override;
    bool isCurrent() const override;

private:
    QObject m_context;
    std::shared_ptr<Scheduler> m_scheduler;
};

} // namespace keldra
