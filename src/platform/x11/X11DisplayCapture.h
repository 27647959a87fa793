#pragma once

#include "base/HostClock.h"
#include "base/SerialQueue.h"
#include "platform/DisplayCapture.h"
#include "platform/x11/X11Monitors.h"

#include <memory>

namespace keldra {

/// A capture by plain requests that every X server knows, on a thread and a connection of its own: each interval the
/// picture is read, and handed on when it differs from the last.
class X11DisplayCapture final : public DisplayCapture {
public:
    X11DisplayCapture(std::shared_ptr<HostClock> clock, std::shared_ptr<MonitorNumbers> numbers, Executor& mainQueue);
    ~X11DisplayCapture() override;
    void start(DisplayCaptureConfiguration configuration, Executor& queue, FrameSink sink,
               Completion<void> done) override;
    void stop(Completion<void> done) override;

private:
    class Run;

    const std::shared_ptr<HostClock> m_clock;
    const std::shared_ptr<MonitorNumbers> m_numbers;
    Executor& m_mainQueue;
    /// Made on main, then the thread's own.
    std::shared_ptr<Run> m_run;
    SerialQueue m_worker{"KELDRA.DisplayCapture"};
};

} // namespace keldra
