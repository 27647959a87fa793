#include "capture_ui/PreviewInteraction.h"

#include "capture_ui/SelectionCandidates.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace keldra {
namespace {

constexpr double cornerRadius = 12;
constexpr double leastSide = 80;

bool isLeft(PreviewDrag drag) {
    return drag == PreviewDrag::topLeft || drag == PreviewDrag::bottomLeft;
}

bool isBottom(PreviewDrag drag) {
    return drag == PreviewDrag::bottomLeft || drag == PreviewDrag::bottomRight;
}

QRectF resized(PreviewDrag drag, const QRectF& initial, QPointF offset) {
    double x = initial.x();
    double y = initial.y();
    double width = initial.width() + (isLeft(drag) ? -offset.x() : offset.x());
    double height = initial.height() + (isBottom(drag) ? -offset.y() : offset.y());
    width = std::max(width, leastSide);
    height = std::max(height, leastSide);
    if (isLeft(drag))
        x += initial.width() - width;
    if (isBottom(drag))
        y += initial.height() - height;
    return {x, y, width, height};
}

/// The far edge has the last word for what is larger than the bounds.
double movedInside(double origin, double length, double boundsOrigin, double boundsLength) {
    return std::min(std::max(origin, boundsOrigin), boundsOrigin + boundsLength - length);
}

} // namespace

PreviewDrag previewDragAt(const QRectF& region, QPointF point) {
    const double right = region.x() + region.width();
    const double upper = region.y() + region.height();
    const std::pair<QPointF, PreviewDrag> corners[] = {
        {{region.x(), region.y()}, PreviewDrag::bottomLeft},
        {{right, region.y()}, PreviewDrag::bottomRight},
        {{region.x(), upper}, PreviewDrag::topLeft},
        {{right, upper}, PreviewDrag::topRight},
    };
    for (const auto& [corner, drag] : corners)
        if (std::hypot(point.x() - corner.x(), point.y() - corner.y()) <= cornerRadius)
            return drag;
    return holdsPixel(region, point) ? PreviewDrag::move : PreviewDrag::none;
}

QRectF draggedPreview(PreviewDrag drag, const QRectF& initial, QPointF offset, const QRectF& bounds) {
    if (drag == PreviewDrag::none)
        return initial;
    const QRectF dragged = drag == PreviewDrag::move ? initial.translated(offset) : resized(drag, initial, offset);
    return {movedInside(dragged.x(), dragged.width(), bounds.x(), bounds.width()),
            movedInside(dragged.y(), dragged.height(), bounds.y(), bounds.height()), dragged.width(), dragged.height()};
}

void PreviewInteraction::press(QPointF point, PreviewDrag drag) {
    m_drag = drag;
    m_start = point;
    m_initial = m_region;
}

void PreviewInteraction::move(QPointF point) {
    if (m_drag != PreviewDrag::none)
        m_region = draggedPreview(m_drag, m_initial, point - m_start, m_bounds);
}

} // namespace keldra
