#pragma once

#include <algorithm>
#include <limits>
#include <utility>

namespace keldra {

/// Finds out how many of a pool's idle buffers nobody needs any more: those that lay idle whenever one was taken, for
/// some ten seconds of frames. So what a busy moment asked for is given back when it is over, and an even load asks for
/// nothing anew.
class SurplusCount {
public:
    static constexpr int takesLookedAt = 600;

    /// Called at each take with how many are idle then. Answers how many can go, 0 but at the end of a look.
    int note(int idleCount) {
        m_leastIdle = std::min(m_leastIdle, idleCount);
        if (++m_takes < takesLookedAt)
            return 0;
        m_takes = 0;
        return std::exchange(m_leastIdle, std::numeric_limits<int>::max());
    }

private:
    int m_takes = 0;
    int m_leastIdle = std::numeric_limits<int>::max();
};

} // namespace keldra
