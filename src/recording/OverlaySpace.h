#pragma once

#include "imaging/Geometry.h"

#include <QPointF>
#include <QRectF>

#include <algorithm>
#include <optional>

namespace keldra {

/// Where desktop points lie on a frame.
struct OverlaySpace {
    /// What the frame shows, desktop points (y up).
    QRectF source;
    /// Where it shows it, pixels of the frame, top row first.
    QRectF target;

    bool isEmpty() const { return source.isEmpty() || target.isEmpty(); }
    double scaleX() const { return target.width() / source.width(); }
    double scaleY() const { return target.height() / source.height(); }
    /// Pixels per point of what is drawn around the pointer: never less than on a plain screen.
    double effectScale() const { return isEmpty() ? 1.0 : std::max(1.0, std::min(scaleX(), scaleY())); }
    /// Nothing for a point outside the source.
    std::optional<QPointF> map(QPointF point) const {
        if (isEmpty() || !source.contains(point))
            return std::nullopt;
        return QPointF(target.x() + (point.x() - source.x()) * scaleX(),
                       target.y() + (source.y() + source.height() - point.y()) * scaleY());
    }
    QRectF map(const QRectF& rect) const {
        return {target.x() + (rect.x() - source.x()) * scaleX(),
                target.y() + (source.y() + source.height() - rect.y() - rect.height()) * scaleY(),
                rect.width() * scaleX(), rect.height() * scaleY()};
    }
};

} // namespace keldra
