#pragma once

#include "imaging/Geometry.h"

#include <QRectF>

#include <cmath>

namespace keldra {

/// Turns pixels of the X root window (origin top left, y down) into desktop points (origin bottom left of the primary
/// monitor, y up) and back.
struct DesktopSpace {
    /// Pixels per point.
    double scaleFactor = 1;
    /// The primary monitor, root pixels.
    PixelRect primary;

    QRectF toPoints(const PixelRect& pixels) const {
        return {(pixels.x - primary.x) / scaleFactor, (primary.bottom() - pixels.bottom()) / scaleFactor,
                pixels.width / scaleFactor, pixels.height / scaleFactor};
    }
    /// Edges go to the nearest pixel, so touching rectangles stay touching.
    PixelRect toPixels(const QRectF& points) const {
        const auto nearest = [this](double value) { return int(std::lround(value * scaleFactor)); };
        const int left = primary.x + nearest(points.left());
        const int top = primary.bottom() - nearest(points.y() + points.height());
        return {left, top, primary.x + nearest(points.x() + points.width()) - left,
                primary.bottom() - nearest(points.y()) - top};
    }
};

} // namespace keldra
