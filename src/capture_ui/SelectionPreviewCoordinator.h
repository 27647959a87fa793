#pragma once

#include "platform/CaptureSelection.h"

#include <QRectF>

#include <functional>

namespace keldra {

/// Shows what will be recorded; a region can be moved and resized. Main thread.
class SelectionPreviewCoordinator {
public:
    virtual ~SelectionPreviewCoordinator() = default;
    /// Replaces what is shown; shows nothing for a display that is gone. `onRegionChange` gets the region in desktop
    /// points at the end of each drag or click, `onCancel` runs in a turn after Escape; both may hide the preview.
    virtual void show(const CaptureSelection& selection, std::function<void(QRectF)> onRegionChange,
                      std::function<void()> onCancel) = 0;
    virtual void hide() = 0;
};

} // namespace keldra
