#pragma once

#include "base/Executor.h"
#include "base/Result.h"

#include <utility>

namespace keldra {

/// Answers whoever started a device, once, on main: with what is given first, at the latest when it goes. One thread at
/// a time.
template <typename T>
class StartAnswer {
public:
    /// `otherwise` is the answer when nothing better is given. `mainQueue` must outlive it.
    StartAnswer(Executor& mainQueue, Completion<T> done, Result<T> otherwise)
        : m_mainQueue(mainQueue), m_done(std::move(done)), m_otherwise(std::move(otherwise)) {}
    ~StartAnswer() { giveOtherwise(); }
    StartAnswer(const StartAnswer&) = delete;
    StartAnswer& operator=(const StartAnswer&) = delete;

    void give(Result<T> answer) {
        if (Completion<T> done = std::exchange(m_done, nullptr))
            m_mainQueue.post([done = std::move(done), answer = std::move(answer)] { done(answer); });
    }
    void giveOtherwise() { give(m_otherwise); }

private:
    Executor& m_mainQueue;
    Completion<T> m_done;
    const Result<T> m_otherwise;
};

} // namespace keldra
