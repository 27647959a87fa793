#pragma once

#include "imaging/Coverage.h"

#include <QRectF>

#include <cstddef>
#include <memory>
#include <optional>

namespace keldra {

/// The mask that rounds a rectangle's corners, drawn once per size and radius. Any thread: one cache for the process,
/// locked while it draws, so that no mask is drawn twice.
namespace RoundedCornerMask {

/// A mask laid on the canvas without scaling.
struct Placed {
    std::shared_ptr<const GreyPlane> plane;
    /// Where its top left corner lies, in canvas pixels.
    double left = 0;
    double top = 0;

    PlacedMask placement() const { return {plane.get(), left, top}; }
};

/// The mask for a rectangle in canvas pixels (y down), at its bottom left corner; none without a radius or when the
/// rectangle is under a pixel in width or height.
std::optional<Placed> maskImage(const QRectF& rect, double radius);

/// The drawn mask of that size. Radii that round to one whole number share the mask drawn first. Null when it cannot be
/// drawn.
std::shared_ptr<const GreyPlane> cachedMask(int width, int height, double radius);

/// At most as many masks are kept; one more throws all of them away.
constexpr std::size_t maximumCount = 25;
/// How many are kept now.
std::size_t cachedCount();

} // namespace RoundedCornerMask

} // namespace keldra
