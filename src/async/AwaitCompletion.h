#pragma once

#include "base/Result.h"

#include <coroutine>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace keldra {

/// Joins an operation that answers through a completion to a coroutine. The completion must run on the thread that the
/// coroutine lives on; one that comes after the coroutine is gone does nothing.
template <typename T>
class CompletionAwaiter {
public:
    using Start = std::function<void(Completion<T>)>;

    explicit CompletionAwaiter(Start start) : m_start(std::move(start)) {}
    CompletionAwaiter(CompletionAwaiter&&) noexcept = default;
    CompletionAwaiter& operator=(CompletionAwaiter&&) noexcept = default;
    ~CompletionAwaiter() {
        if (m_shared)
            m_shared->waiting = nullptr;
    }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> handle) {
        m_shared->waiting = handle;
        m_start([shared = m_shared](Result<T> result) {
            const auto resume = std::exchange(shared->waiting, nullptr);
            if (!resume)
                return;
            shared->result.emplace(std::move(result));
            resume.resume();
        });
    }
    Result<T> await_resume() { return std::move(*m_shared->result); }

private:
    struct Shared {
        std::coroutine_handle<> waiting;
        std::optional<Result<T>> result;
    };
    Start m_start;
    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
};

/// The callable must capture by reference only: g++ 12 destroys the temporaries of an awaited expression twice, which
/// is harmless for references and ruins anything that owns.
///
/// auto asset = co_await awaitCompletion<AssetPtr>([&](auto done) { Asset::load(path, worker, main, done); });
template <typename T, typename Start>
CompletionAwaiter<T> awaitCompletion(Start start) {
    static_assert(std::is_trivially_destructible_v<Start>, "capture by reference");
    return CompletionAwaiter<T>(std::move(start));
}

} // namespace keldra
