#pragma once

#include "imaging/Geometry.h"
#include "platform/CaptureSelection.h"
#include "platform/Screens.h"

#include <QRectF>

#include <optional>

namespace keldra {

/// Pixels of a rectangle of points at that scale: cut to whole numbers, rounded down to even, at least 2.
PixelRect evenPixelSize(QSizeF points, double scale);

/// The screen that a capture's numbers are measured by: the one with that number, else 1920 by 1080 at scale 2.
Screen screenForCapture(const QList<Screen>& screens, std::uint32_t displayID);

/// Pixels per point of a window: of the screen that holds its centre, 2 when none does.
double scaleForWindow(const QList<Screen>& screens, const QRectF& windowFrame);

/// Which part of a picture of the whole display a region's frame shows. `region` and `capture` (what the picture
/// shows) are desktop points, y up; the result is in the picture's pixels, top row first, of the size of the output.
/// It may reach beyond the picture. Nothing when a side is not positive.
std::optional<PixelRect> cropForRegion(const QRectF& region, const QRectF& capture, int pictureWidth, int pictureHeight,
                                       int outputWidth, int outputHeight);

} // namespace keldra
