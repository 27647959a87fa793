#pragma once

#include "platform/ScreenStream.h"

namespace keldra {

struct DisplayCaptureConfiguration {
    std::uint32_t displayID = 0;
    /// The part that is captured, in pixels of the display, top row first; it may reach beyond it, and is black there.
    /// The frames have its size.
    PixelRect crop;
    Duration minimumFrameInterval{};
    bool showsCursor = true;
};

/// The plain way to record a display: what is on the screen is captured, our own windows too. For desktops that cannot
/// stream. Delivers a frame at the start and then whenever the picture has changed, at most at the asked rate.
///
/// Threads, time and errors as ScreenStream.
class DisplayCapture {
public:
    virtual ~DisplayCapture() = default;
    virtual void start(DisplayCaptureConfiguration configuration, Executor& queue, FrameSink sink,
                       Completion<void> done) = 0;
    /// No frame is delivered after `done` has run.
    virtual void stop(Completion<void> done) = 0;
};

using DisplayCaptureFactory = std::function<std::unique_ptr<DisplayCapture>()>;

/// What the desktop's user has picked: a capture that is to be started with its whole size as the crop.
struct PickedDisplay {
    std::shared_ptr<DisplayCapture> capture;
    PixelRect whole;
};

/// Has the desktop ask its user for a display; what the configuration says of display and crop does not count. Answers
/// on main, however long the user takes. Errors: a refusal, or a desktop that cannot.
using DisplayPicker = std::function<void(DisplayCaptureConfiguration configuration, Completion<PickedDisplay> done)>;

} // namespace keldra
