#pragma once

#include "base/Result.h"
#include "platform/CaptureSelection.h"
#include "platform/DisplayCapture.h"
#include "platform/Screens.h"

namespace keldra {

/// What is asked of the plain display capture for a selection. A window is a fixed piece of its display here and does
/// not follow the window; the movie has the size of the crop. Errors: couldNotCreateScreenInput for a display that is
/// gone.
[[nodiscard]] Result<DisplayCaptureConfiguration> planDisplayCapture(const QList<Screen>& screens,
                                                                     const CaptureSelection& selection);

} // namespace keldra
