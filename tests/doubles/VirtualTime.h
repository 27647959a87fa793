#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"
#include "base/HostClock.h"

#include <deque>
#include <limits>
#include <map>
#include <memory>
#include <string>

namespace keldra {

/// One hand that drives clock, queues and scheduler together, on one thread. Nothing runs but in settle() and
/// advance(): first all posted work, in the order posted, whatever its queue; then the next due time, and so on.
class VirtualTime {
public:
    VirtualTime() = default;
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    /// Starts at 1,000 s, as no clock of a running machine stands at zero.
    std::shared_ptr<HostClock> clock() { return m_clock; }
    Scheduler& scheduler() { return m_scheduler; }
    Executor& mainQueue() { return queue("main"); }
    /// The queue of that name, made at first use. `bound` counts then.
    Executor& queue(const std::string& name, std::size_t bound = std::numeric_limits<std::size_t>::max());

    /// Runs what is posted, and what that posts, while time stands still.
    void settle();
    /// Moves time on and runs everything that falls due, each at its own moment.
    void advance(Duration duration);

private:
    class Clock final : public HostClock {
    public:
        MediaTime now() const override;
        Duration sinceBoot = std::chrono::seconds(1000);
    };

    class Queue final : public Executor {
    public:
        Queue(VirtualTime& time, std::size_t bound) : m_time(time), m_bound(bound) {}
        void post(Work work) override;
        bool tryPost(Work work) override;
        void sync(const Work& work) override;
        Timer every(Duration period, Work work) override;
        bool isCurrent() const override { return m_time.m_current == this; }

    private:
        VirtualTime& m_time;
        std::size_t m_bound;
    };

    class VirtualScheduler final : public Scheduler {
    public:
        explicit VirtualScheduler(VirtualTime& time) : m_time(time) {}
        Timer after(Duration delay, Work work) override;
        Timer every(Duration period, Work work) override;

    private:
        VirtualTime& m_time;
    };

    struct Posted {
        Queue* queue;
        Work work;
    };
    struct Due {
        Queue* queue;
        Duration period;
        Work work;
    };
    using DueTime = std::pair<Duration, std::uint64_t>;

    Timer arm(Queue* queue, Duration first, Duration period, Work work);
    void insert(std::uint64_t number, Duration due, Due entry);
    void run(Queue* queue, const Work& work);
    Queue* mainQueueObject() { return static_cast<Queue*>(&mainQueue()); }

    std::shared_ptr<Clock> m_clock = std::make_shared<Clock>();
    std::map<std::string, std::unique_ptr<Queue>> m_queues;
    std::deque<Posted> m_posted;
    std::map<DueTime, Due> m_due;
    std::uint64_t m_nextNumber = 0;
    Queue* m_current = nullptr;
    VirtualScheduler m_scheduler{*this};
    /// Timers may outlive this object.
    std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
};

} // namespace keldra
