#pragma once

#include <QPointF>
#include <QRectF>

namespace keldra {

/// What a drag on the preview of a region changes: the whole, or one corner. y grows upwards.
enum class PreviewDrag { none, move, topLeft, topRight, bottomLeft, bottomRight };

/// What a drag that begins there would change. Corners come before the inside.
PreviewDrag previewDragAt(const QRectF& region, QPointF point);

/// The region after a drag by that offset, in desktop points: never under 80 points either way, where the opposite
/// edge holds, and moved, not shrunk, to lie within the bounds.
QRectF draggedPreview(PreviewDrag drag, const QRectF& initial, QPointF offset, const QRectF& bounds);

/// A region that is being adjusted. Places are desktop points.
class PreviewInteraction {
public:
    /// `bounds`: the whole desktop.
    PreviewInteraction(const QRectF& region, const QRectF& bounds) : m_region(region), m_bounds(bounds) {}

    const QRectF& region() const { return m_region; }
    PreviewDrag drag() const { return m_drag; }

    void press(QPointF point, PreviewDrag drag);
    void move(QPointF point);
    void release() { m_drag = PreviewDrag::none; }

private:
    QRectF m_region;
    QRectF m_bounds;
    PreviewDrag m_drag = PreviewDrag::none;
    QRectF m_initial;
    QPointF m_start;
};

} // namespace keldra
