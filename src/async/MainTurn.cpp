#include "async/MainTurn.h"

#include "async/AwaitCompletion.h"

namespace keldra {

MainTurn::MainTurn(Executor& main, std::shared_ptr<const HostClock> clock) : m_main(&main), m_clock(std::move(clock)) {
    begin();
}

void MainTurn::begin() {
    m_end = m_clock->now() +
            MediaTime(std::chrono::duration_cast<std::chrono::microseconds>(length).count(), HostClock::timescale);
}

bool MainTurn::isOver() const {
    return m_clock->now() >= m_end;
}

QCoro::Task<> MainTurn::next() {
    // Posting answers without fail.
    (void)co_await awaitCompletion<void>(
        [this](Completion<void> done) { m_main->post([done = std::move(done)] { done({}); }); });
    begin();
}

} // namespace keldra
