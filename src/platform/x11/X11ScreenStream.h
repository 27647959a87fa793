#pragma once

#include "base/HostClock.h"
#include "platform/ScreenStream.h"
#include "platform/x11/StreamWorker.h"
#include "platform/x11/X11Monitors.h"

#include <memory>

namespace keldra {

/// A stream by XComposite and XDamage, on a thread and a connection of its own. The destructor ends the thread.
class X11ScreenStream final : public ScreenStream {
public:
    X11ScreenStream(std::shared_ptr<HostClock> clock, std::shared_ptr<MonitorNumbers> numbers, Executor& mainQueue);
    void start(StreamConfiguration configuration, Executor& queue, FrameSink sink, Completion<void> done) override;
    void stop(Completion<void> done) override;

private:
    std::shared_ptr<HostClock> m_clock;
    std::shared_ptr<MonitorNumbers> m_numbers;
    Executor& m_mainQueue;
    std::unique_ptr<StreamWorker> m_worker;
};

} // namespace keldra
