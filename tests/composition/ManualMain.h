#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"
#include "base/HostClock.h"

#include <QCoroTask>

#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace keldra::testing {

/// A main thread whose turns the test gives by hand.
class ManualMain final : public Executor {
public:
    void post(Work work) override { m_work.push_back(std::move(work)); }
    bool tryPost(Work work) override {
        post(std::move(work));
        return true;
    }
    void sync(const Work& work) override { work(); }
    Timer every(Duration, Work) override { return {}; }
    bool isCurrent() const override { return true; }

    /// Runs what is posted until nothing is left.
    void run() {
        while (runOne()) {
        }
    }
    /// Gives one turn; false when nothing is posted.
    bool runOne() {
        if (m_work.empty())
            return false;
        const Work work = std::move(m_work.front());
        m_work.pop_front();
        work();
        return true;
    }

private:
    std::deque<Work> m_work;
};

/// A clock that every look moves on by `step` microseconds.
class SteppedClock final : public HostClock {
public:
    explicit SteppedClock(std::int64_t stepMicroseconds = 0) : step(stepMicroseconds) {}
    MediaTime now() const override { return MediaTime(m_now += step, timescale); }

    std::int64_t step;

private:
    mutable std::int64_t m_now = 0;
};

/// Repeats that come due when the test says so.
class ManualScheduler final : public Scheduler {
public:
    Timer after(Duration, Work) override { return {}; }
    Timer every(Duration period, Work work) override {
        auto repeat = std::make_shared<Repeat>(Repeat{period, std::move(work), true});
        m_repeats.push_back(repeat);
        return Timer([repeat] { repeat->isActive = false; });
    }

    /// Lets every active repeat run once; answers how many there were.
    int tick() {
        int count = 0;
        for (const auto& repeat : std::vector(m_repeats))
            if (repeat->isActive) {
                ++count;
                repeat->work();
            }
        return count;
    }
    Duration lastPeriod() const { return m_repeats.back()->period; }

private:
    struct Repeat {
        Duration period;
        Work work;
        bool isActive;
    };
    std::vector<std::shared_ptr<Repeat>> m_repeats;
};

/// Keeps the answer of a task.
template <typename T>
QCoro::Task<> keep(QCoro::Task<T> task, std::optional<T>& answer) {
    answer.emplace(co_await std::move(task));
}

/// Runs a task to its end by giving `main` turns.
template <typename T>
std::optional<T> finish(QCoro::Task<T> task, ManualMain& main) {
    std::optional<T> answer;
    const QCoro::Task<> keeping = keep(std::move(task), answer);
    main.run();
    return answer;
}

} // namespace keldra::testing
