#pragma once

#include "base/Result.h"
#include "imaging/Geometry.h"
#include "platform/CaptureSelection.h"
#include "platform/ScreenStream.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"

namespace keldra {

/// What is asked of the screen stream for a selection, and the size of the movie made of it, in pixels. A region asks
/// for its whole display and is cut out of each frame.
struct StreamPlan {
    std::variant<DisplaySource, WindowSource> source;
    PixelRect captureSize;
    PixelRect outputSize;
};

/// Errors: couldNotFindDisplay, couldNotFindWindow.
[[nodiscard]] Result<StreamPlan> planStream(const ShareableContentSnapshot& content, const QList<Screen>& screens,
                                            const CaptureSelection& selection);

} // namespace keldra
