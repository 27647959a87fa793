#pragma once

#include "base/HostClock.h"
#include "platform/DisplayCapture.h"

#include <memory>

namespace keldra {

/// Captures a monitor through the desktop's portal: on a desktop where a program sees the screen only by its user's
/// leave, who also says which monitor it is. The first capture of a run shows the desktop's own dialog. Frames have the
/// monitor's true size, but for an odd row or column; one whose size changes later is fitted into its first one.
class PortalDisplayCapture final : public DisplayCapture {
public:
    /// As DisplayPicker. Answers when the first picture has come, which the capture then begins with. `restoreToken` is
    /// the session's. Errors: also when no picture comes.
    static void pick(std::shared_ptr<HostClock> clock, Executor& mainQueue, std::shared_ptr<QString> restoreToken,
                     DisplayCaptureConfiguration configuration, Completion<PickedDisplay> done);
    ~PortalDisplayCapture() override;
    /// The rate is the one that it was picked with.
    void start(DisplayCaptureConfiguration configuration, Executor& queue, FrameSink sink,
               Completion<void> done) override;
    void stop(Completion<void> done) override;

private:
    class Run;

    PortalDisplayCapture(std::shared_ptr<Run> run, Executor& mainQueue);

    Executor& m_mainQueue;
    std::shared_ptr<Run> m_run;
};

} // namespace keldra
