#include "composition/LayerPlacement.h"

#include <cmath>

namespace keldra {
namespace {

/// What a picture of that size may shift by a coefficient that should be zero, in pixels.
constexpr double nothing = 1.0 / 256;

/// The turn whose four coefficients have the same signs; see turnTransform().
std::optional<Turn> turnOf(const QTransform& t, const QSize& size) {
    const double longest = std::max(size.width(), size.height());
    const auto isNothing = [longest](double coefficient) { return std::abs(coefficient) * longest < nothing; };
    if (isNothing(t.m12()) && isNothing(t.m21()) && t.m11() != 0 && t.m22() != 0)
        return Turn{(t.m11() < 0) != (t.m22() < 0), t.m22() < 0 ? 2 : 0};
    if (isNothing(t.m11()) && isNothing(t.m22()) && t.m12() != 0 && t.m21() != 0)
        return Turn{(t.m12() < 0) == (t.m21() < 0), t.m21() < 0 ? 1 : 3};
    return std::nullopt;
}

} // namespace

QRectF placedRect(const QTransform& transform, const QSize& size) {
    const QRectF rect = transform.mapRect(QRectF(QPointF(), size));
    const bool isFinite = std::isfinite(rect.x()) && std::isfinite(rect.y()) && std::isfinite(rect.width()) &&
                          std::isfinite(rect.height());
    return isFinite ? rect : QRectF();
}

std::optional<AxisPlacement> axisPlacement(const QTransform& transform, const QSize& size) {
    const auto turn = turnOf(transform, size);
    const QRectF rect = placedRect(transform, size);
    if (!turn || !(rect.width() > 0) || !(rect.height() > 0))
        return std::nullopt;
    const QSize turned = turn->swapsSides() ? size.transposed() : size;
    return AxisPlacement{*turn, {rect.width() / turned.width(), rect.height() / turned.height(), rect.x(), rect.y()}};
}

} // namespace keldra
