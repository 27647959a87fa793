#pragma once

#include "platform/CaptureSelection.h"
#include "platform/Screens.h"
#include "platform/WindowList.h"
#include "recording/OverlaySpace.h"

namespace keldra {

/// Where desktop points lie now on a frame of that size that shows the selection. A window is followed, also into the
/// bars that it has when it no longer has its first size, and so is a display. A region keeps its distance from the
/// upper left corner that its display had at the start (`displayAtStart`, desktop points). Empty when the display is
/// gone.
OverlaySpace overlaySpaceOf(const CaptureSelection& selection, const Screens& screens, const WindowList& windows,
                            const QRectF& displayAtStart, int frameWidth, int frameHeight);

} // namespace keldra
