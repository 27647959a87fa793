#pragma once

#include "base/Executor.h"

#include <deque>

namespace keldra {

/// Answers that come in a later turn of main or, while it holds, when the test says so: first asked, first answered.
class Answers {
public:
    explicit Answers(Executor& mainQueue) : m_mainQueue(mainQueue) {}

    void add(Work answer) {
        m_waiting.push_back(std::move(answer));
        if (!holds)
            release();
    }
    void release() {
        m_mainQueue.post(std::move(m_waiting.front()));
        m_waiting.pop_front();
    }
    void releaseAll() {
        holds = false;
        while (!m_waiting.empty())
            release();
    }

    bool holds = false;

private:
    Executor& m_mainQueue;
    std::deque<Work> m_waiting;
};

} // namespace keldra
