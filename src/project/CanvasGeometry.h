#pragma once

#include "project/EditorProject.h"

#include <QMarginsF>
#include <QRectF>
#include <QSize>

#include <optional>

// From a style's fractions to pixels. All in canvas pixels: origin top left, y down. Nothing here fails: degenerate
// input gives the empty rectangle.

namespace keldra {

/// A pixel count that encoders take: whole, even, 2 to 7680.
int evenDimension(double pixels);

/// The size of the output frame; 2 by 2 for a project without a size.
QSize renderSize(const EditorProject& project);

/// Each fraction, limited to 0 to 0.4, of the smaller canvas side.
QMarginsF paddingPixels(const CanvasInsets& fractions, const QSizeF& canvas);

/// Where a picture of the size `source` lies: centred in what the insets leave. A filling picture may pass the insets.
QRectF videoRect(const QSizeF& source, const QSizeF& canvas, const QMarginsF& insets, ContentFit fit);

/// A corner radius of that fraction of the rectangle's smaller side, at most half of it.
double cornerRadiusPixels(double fraction, const QRectF& videoRect);

struct ShadowGeometry {
    QRectF rect;
    /// Sigma of the blur, in pixels.
    double blur = 0;
    double opacity = 0;
    friend bool operator==(const ShadowGeometry&, const ShadowGeometry&) = default;
};

/// The shadow that a picture at `videoRect` casts; none when it is off or a rectangle is empty.
std::optional<ShadowGeometry> shadowGeometry(const CanvasShadow& shadow, const QRectF& videoRect, const QRectF& canvas);

/// Where a background picture of the size `image` lies on the canvas: centred, inside it or covering it.
QRectF imageRect(const QSizeF& image, const QRectF& canvas, ContentFit fit);

} // namespace keldra
