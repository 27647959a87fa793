#pragma once

#include "imaging/Coverage.h"
#include "imaging/Geometry.h"

#include <QRectF>
#include <QTransform>

namespace keldra {

inline QTransform toQTransform(const AffineTransform& t) {
    return {t.a, t.b, t.c, t.d, t.tx, t.ty};
}

inline AffineTransform toAffineTransform(const QTransform& t) {
    return {t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy()};
}

inline Edges toEdges(const QRectF& rect) {
    return {rect.left(), rect.top(), rect.right(), rect.bottom()};
}

} // namespace keldra
