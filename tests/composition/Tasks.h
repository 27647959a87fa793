#pragma once

#include "base/HostClock.h"
#include "doubles/PumpedExecutor.h"

#include <QCoroTask>

#include <gtest/gtest.h>
#include <optional>
#include <utility>

namespace keldra::test {

/// A clock that every look moves on by `step` microseconds.
class SteppedClock final : public HostClock {
public:
    MediaTime now() const override { return MediaTime(m_now += step, timescale); }

    std::int64_t step = 0;

private:
    mutable std::int64_t m_now = 0;
};

/// Keeps the answer of a task.
template <typename T>
QCoro::Task<> keep(QCoro::Task<T> task, std::optional<T>& answer) {
    answer.emplace(co_await std::move(task));
}

/// Runs a task to its end by giving `main` turns, and counts them.
template <typename T>
T finish(QCoro::Task<T> task, PumpedExecutor& main, int* turns = nullptr) {
    std::optional<T> answer;
    int count = 0;
    const QCoro::Task<> keeping = keep(std::move(task), answer);
    EXPECT_TRUE(main.pumpUntil([&] { return ++count, answer.has_value(); }));
    if (turns)
        *turns = count;
    return std::move(answer.value());
}

} // namespace keldra::test
