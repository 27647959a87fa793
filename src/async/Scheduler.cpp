#include "async/Scheduler.h"

#include "async/AwaitCompletion.h"

namespace keldra {

QCoro::Task<> Scheduler::sleep(Duration delay) {
    Timer timer;
    // The result of a sleep carries nothing.
    (void)co_await awaitCompletion<void>(
        [&timer, this, delay](Completion<void> done) { timer = after(delay, [done] { done({}); }); });
}

} // namespace keldra
