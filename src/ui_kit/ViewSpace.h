#pragma once

#include <QPointF>
#include <QRectF>

namespace keldra {

/// Desktop points (y up) <-> the coordinates in which an overlay is painted: points from its upper left corner, y down.
struct ViewSpace {
    /// What the overlay covers, desktop points.
    QRectF frame;

    double top() const { return frame.y() + frame.height(); }
    QPointF toView(const QPointF& point) const { return {point.x() - frame.x(), top() - point.y()}; }
    QRectF toView(const QRectF& rect) const {
        return {rect.x() - frame.x(), top() - rect.y() - rect.height(), rect.width(), rect.height()};
    }
    QPointF toPoints(const QPointF& view) const { return {frame.x() + view.x(), top() - view.y()}; }
    friend bool operator==(const ViewSpace&, const ViewSpace&) = default;
};

} // namespace keldra
