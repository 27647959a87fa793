#pragma once

#include "platform/x11/X11Connection.h"

#include <QPoint>
#include <QRegion>

#include <xcb/render.h>

namespace keldra {

/// Where something is painted: a picture whose top-left pixel shows the root pixel `origin`.
struct PaintTarget {
    xcb_render_picture_t picture = 0;
    QPoint origin;
};

/// Paints `region` (root pixels) from a picture whose top-left pixel belongs at `sourceOrigin` (root pixels).
void paintRegion(const X11Connection& x, std::uint8_t operation, xcb_render_picture_t source, QPoint sourceOrigin,
                 const PaintTarget& target, const QRegion& region);

/// Paints `region` (root pixels) black and opaque.
void paintBlack(const X11Connection& x, const PaintTarget& target, const QRegion& region);

} // namespace keldra
