#include "base/SerialQueue.h"

#include "base/Recycling.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <future>
#include <pthread.h>
#include <thread>

namespace keldra {

struct SerialQueue::State {
    State(std::string queueName, std::size_t queueBound) : name(std::move(queueName)), bound(queueBound) {}

    const std::string name;
    const std::size_t bound;
    std::atomic<std::size_t> waiting = 0;
    // Not io_context(1): with that hint asio keeps what the thread itself posts aside until its handler ends, and work
    // that another thread posts later would overtake it.
    asio::io_context context;
    asio::executor_work_guard<asio::io_context::executor_type> keepsRunning = asio::make_work_guard(context);
    std::thread thread;

    /// A piece of work on its way.
    struct Turn {
        using allocator_type = Recycling<std::byte>;

        State& state;
        Work work;

        allocator_type get_allocator() const noexcept { return {}; }
        void operator()() const {
            state.waiting.fetch_sub(1, std::memory_order_relaxed);
            work();
        }
    };

    void enqueue(Work work) {
        waiting.fetch_add(1, std::memory_order_relaxed);
        asio::post(context, Turn{*this, std::move(work)});
    }
};

namespace {

/// A repeat on the queue: exact due times, one asio timer that is armed again after each run.
class Repeat : public std::enable_shared_from_this<Repeat> {
public:
    Repeat(asio::io_context& context, Duration period, Work work, std::shared_ptr<std::atomic<bool>> isCancelled)
        : m_timer(context)
        , m_period(period)
        , m_work(std::move(work))
        , m_due(std::chrono::steady_clock::now())
        , m_isCancelled(std::move(isCancelled)) {}

    void arm() {
        if (*m_isCancelled)
            return;
        const auto now = std::chrono::steady_clock::now();
        do {
            m_due += m_period;
        } while (m_due + m_period <= now);
        m_timer.expires_at(m_due);
        m_timer.async_wait([self = shared_from_this()](const asio::error_code& error) {
            if (error || *self->m_isCancelled)
                return;
            self->m_work();
            self->arm();
        });
    }

    /// On the queue only: lets go of what the timer holds.
    void disarm() { m_timer.cancel(); }

private:
    asio::steady_timer m_timer;
    Duration m_period;
    Work m_work;
    std::chrono::steady_clock::time_point m_due;
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
};

} // namespace

SerialQueue::SerialQueue(std::string name, std::size_t bound)
    : m_state(std::make_shared<State>(std::move(name), bound)) {
    m_state->thread = std::thread([state = m_state.get()] {
        // The kernel keeps 15 bytes of a thread's name; the end tells our queues apart.
        const std::string& full = state->name;
        pthread_setname_np(pthread_self(), full.substr(full.size() > 15 ? full.size() - 15 : 0).c_str());
        state->context.run();
    });
}

SerialQueue::~SerialQueue() {
    // Stopping from within keeps what was posted earlier, and leaves repeats behind.
    asio::post(m_state->context, [state = m_state.get()] { state->context.stop(); });
    m_state->thread.join();
}

void SerialQueue::post(Work work) {
    m_state->enqueue(std::move(work));
}

bool SerialQueue::tryPost(Work work) {
    if (m_state->waiting.load(std::memory_order_relaxed) >= m_state->bound)
        return false;
    m_state->enqueue(std::move(work));
    return true;
}

void SerialQueue::sync(const Work& work) {
    if (isCurrent()) {
        work();
        return;
    }
    // Shared, because the waiter may be gone while set_value() is still returning.
    const auto done = std::make_shared<std::promise<void>>();
    m_state->enqueue([&work, done] {
        work();
        done->set_value();
    });
    done->get_future().wait();
}

Timer SerialQueue::every(Duration period, Work work) {
    auto isCancelled = std::make_shared<std::atomic<bool>>(false);
    auto repeat = std::make_shared<Repeat>(m_state->context, period, std::move(work), isCancelled);
    asio::post(m_state->context, [repeat] { repeat->arm(); });
    // The repeat belongs to the queue's context and must not outlive it, so the timer only watches both.
    return Timer([isCancelled, watched = std::weak_ptr<Repeat>(repeat), state = std::weak_ptr<State>(m_state)] {
        *isCancelled = true;
        if (const auto alive = state.lock())
            asio::post(alive->context, [watched] {
                if (const auto armed = watched.lock())
                    armed->disarm();
            });
    });
}

bool SerialQueue::isCurrent() const {
    return std::this_thread::get_id() == m_state->thread.get_id();
}

const std::string& SerialQueue::name() const {
    return m_state->name;
}

} // namespace keldra
