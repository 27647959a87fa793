#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace keldra::test {

inline constexpr std::chrono::seconds deadline{20};

/// Lets the main loop run until the condition holds; false when it does not in time. It is looked at after every event
/// and, as other threads may bring it about without one, every now and then.
[[nodiscard]] inline bool runUntil(const std::function<bool()>& condition) {
    QEventLoop loop;
    QTimer look;
    look.start(std::chrono::milliseconds(20));
    const QDeadlineTimer end(deadline);
    while (!condition() && !end.hasExpired())
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
    [[nodiscard]] bool wait() {
        return runUntil([this] { return value.has_value(); });
    }
};

} // namespace keldra::test
