#include "composition/ClipTransform.h"

#include "project/CanvasGeometry.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

QTransform translation(double x, double y) {
    return QTransform::fromTranslate(x, y);
}

/// Upright, and centred on the canvas without padding.
QTransform baseTransform(const QTransform& preferred, const QRectF& upright, const QSizeF& canvas) {
    const double width = std::max(1.0, std::abs(upright.width()));
    const double height = std::max(1.0, std::abs(upright.height()));
    const double scale = std::min(canvas.width() / width, canvas.height() / height);
    return preferred * translation(-upright.left(), -upright.top()) * QTransform::fromScale(scale, scale) *
           translation((canvas.width() - width * scale) / 2, (canvas.height() - height * scale) / 2);
}

bool isUsable(const QRectF& rect) {
    return std::isfinite(rect.x()) && std::isfinite(rect.y()) && std::isfinite(rect.width()) &&
           std::isfinite(rect.height()) && rect.width() > 0 && rect.height() > 0;
}

QTransform rectTransform(const QRectF& from, const QRectF& to) {
    if (!isUsable(from))
        return {};
    return translation(-from.left(), -from.top()) *
           QTransform::fromScale(to.width() / from.width(), to.height() / from.height()) *
           translation(to.left(), to.top());
}

} // namespace

ClipTransform clipTransform(const QTransform& preferredTransform, const QSizeF& naturalSize, const QSize& renderSize,
                            const CanvasStyle& style) {
    const QSizeF canvas(renderSize);
    const QRectF upright = preferredTransform.mapRect(QRectF(QPointF(), naturalSize));
    const QRectF base = videoRect(upright.size(), canvas, {}, ContentFit::fit);
    const QRectF target =
        videoRect(upright.size(), canvas, paddingPixels(style.paddingFraction, canvas), style.videoFit);
    return {baseTransform(preferredTransform, upright, canvas) * rectTransform(base, target), !target.isEmpty()};
}

} // namespace keldra
