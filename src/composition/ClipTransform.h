#pragma once

#include "project/CanvasStyle.h"

#include <QSize>
#include <QSizeF>
#include <QTransform>

namespace keldra {

/// Where a clip's picture lies on the canvas.
struct ClipTransform {
    /// Source pixels to canvas pixels, both with their origin top left, y down.
    QTransform transform;
    /// False when padding leaves no room.
    bool isVisible = true;
};

/// Places a picture upright on a canvas of `renderSize` pixels, as the style's padding and fit ask.
ClipTransform clipTransform(const QTransform& preferredTransform, const QSizeF& naturalSize, const QSize& renderSize,
                            const CanvasStyle& style);

} // namespace keldra
