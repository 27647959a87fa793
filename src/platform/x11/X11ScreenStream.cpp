#include "platform/x11/X11ScreenStream.h"

#include "platform/x11/X11Error.h"

namespace keldra {

X11ScreenStream::X11ScreenStream(std::shared_ptr<HostClock> clock, std::shared_ptr<MonitorNumbers> numbers,
                                 Executor& mainQueue)
    : m_clock(std::move(clock)), m_numbers(std::move(numbers)), m_mainQueue(mainQueue) {}

void X11ScreenStream::start(StreamConfiguration configuration, Executor& queue, FrameSink sink, Completion<void> done) {
    if (m_worker && !m_worker->hasEnded()) {
        m_mainQueue.post([done = std::move(done)] {
            done(fail(x11Error(X11ErrorCode::alreadyRunning, "The screen stream is already running.")));
        });
        return;
    }
    m_worker = std::make_unique<StreamWorker>(std::move(configuration), m_clock, m_numbers, m_mainQueue, queue,
                                              std::move(sink), std::move(done));
}

void X11ScreenStream::stop(Completion<void> done) {
    if (m_worker)
        m_worker->stop(std::move(done));
    else
        m_mainQueue.post([done = std::move(done)] { done({}); });
}

} // namespace keldra
