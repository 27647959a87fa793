#pragma once

#include "base/HostClock.h"
#include "platform/DisplayCapture.h"
#include "platform/Screens.h"

#include <memory>

namespace keldra {

/// Captures a monitor through the desktop's portal: on a desktop where a program sees the screen only by its user's
/// leave, who also says which monitor it is. The first capture of a run shows the desktop's own dialog.
class PortalDisplayCapture final : public DisplayCapture {
public:
    PortalDisplayCapture(std::shared_ptr<HostClock> clock, std::shared_ptr<Screens> screens, Executor& mainQueue);
    ~PortalDisplayCapture() override;
    void start(DisplayCaptureConfiguration configuration, Executor& queue, FrameSink sink,
               Completion<void> done) override;
    void stop(Completion<void> done) override;

private:
    class Run;

    const std::shared_ptr<HostClock> m_clock;
    const std::shared_ptr<Screens> m_screens;
    Executor& m_mainQueue;
    std::shared_ptr<Run> m_run;
};

} // namespace keldra
