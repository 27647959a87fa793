#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace keldra {

using Work = std::function<void()>;
using Duration = std::chrono::nanoseconds;

/// A repeat or a delayed call that lasts as long as this object. Cancelling on the executor that runs the work is
/// final: the work does not run again. From another thread a run under way may still end.
class Timer {
public:
    /// What stops the repeat; called at most once.
    using Cancel = std::function<void()>;

    Timer() = default;
    explicit Timer(Cancel cancel) : m_cancel(std::move(cancel)) {}
    Timer(Timer&& other) noexcept : m_cancel(std::exchange(other.m_cancel, nullptr)) {}
    Timer& operator=(Timer&& other) noexcept {
        if (this != &other) {
            cancel();
            m_cancel = std::exchange(other.m_cancel, nullptr);
        }
        return *this;
    }
    ~Timer() { cancel(); }

    void cancel() {
        if (const Cancel stop = std::exchange(m_cancel, nullptr))
            stop();
    }
    explicit operator bool() const { return m_cancel != nullptr; }

private:
    Cancel m_cancel;
};

/// Where work runs: one piece after the other, in the order posted. All operations are for any thread.
class Executor {
public:
    virtual ~Executor() = default;

    /// Queues the work. Never runs it before returning.
    virtual void post(Work work) = 0;
    /// The same, but refuses (answers false) when as many pieces wait as the executor's bound allows.
    [[nodiscard]] virtual bool tryPost(Work work) = 0;
    /// Runs the work here and returns when it has run; on the executor itself it runs at once.
    virtual void sync(const Work& work) = 0;
    /// Runs the work at start + period, start + 2 * period, ...: late runs do not shift later ones, and a run that
    /// would be a whole period late is left out.
    [[nodiscard]] virtual Timer every(Duration period, Work work) = 0;
    /// Whether the caller runs on this executor.
    virtual bool isCurrent() const = 0;
};

} // namespace keldra
