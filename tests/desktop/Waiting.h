#pragma once

#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace keldra::test {

inline constexpr std::chrono::seconds deadline{20};

/// Lets the main loop run until the condition holds; false when it does not in time. It is looked at after every event.
inline bool runUntil(const std::function<bool()>& condition) {
    QEventLoop loop;
    bool isLate = false;
    QTimer::singleShot(deadline, &loop, [&] { isLate = true; });
    while (!condition() && !isLate)
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

/// An answer that comes through a completion.
template <typename T>
struct Answer {
    std::optional<T> value;
    auto taker() {
        return [this](T answer) { value.emplace(std::move(answer)); };
    }
    bool wait() {
        return runUntil([this] { return value.has_value(); });
    }
};

} // namespace keldra::test
