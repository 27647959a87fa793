#pragma once

#include "base/Result.h"
#include "platform/CaptureSelection.h"
#include "platform/Platform.h"
#include "recording/CameraOverlayState.h"

#include <QString>

namespace keldra {

/// The device that the command line names by id or by name, whatever the case; the desktop's choice for an empty word.
/// Errors say what is there instead, or what to do.
[[nodiscard]] Result<CaptureDeviceOption> deviceFor(const Platform& platform, CaptureDeviceKind kind,
                                                    const QString& word);

/// Where the command line puts the camera: a large circle in the lower right corner of what is recorded. Desktop
/// points.
CameraOverlaySnapshot bubbleFor(const CaptureSelection& selection, const Screens& screens, const WindowList& windows);

} // namespace keldra
