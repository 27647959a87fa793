#include "composition/ClipShape.h"

#include "composition/GradientFill.h"
#include "composition/RoundedCornerMask.h"
#include "composition/Transforms.h"
#include "imaging/Blur.h"
#include "imaging/Convert.h"
#include "project/CanvasGeometry.h"
#include "project/Clean.h"

#include <algorithm>

namespace keldra {
namespace {

/// QRectF compares approximately.
auto exactParts(const QRectF& rect) {
    return std::array{rect.x(), rect.y(), rect.width(), rect.height()};
}

std::optional<RoundedCornerMask::Placed> cornerMask(const ClipShapeKey& key) {
    if (!isPositiveFinite(key.cornerRadiusFraction) || key.videoRect.isEmpty())
        return std::nullopt;
    return RoundedCornerMask::maskImage(key.videoRect, cornerRadiusPixels(key.cornerRadiusFraction, key.videoRect));
}

GreyPlane faded(const GreyPlane& plane, double factor) {
    GreyPlane result(plane.bounds());
    const PixelRect& bounds = plane.bounds();
    for (int y = bounds.y; y < bounds.bottom(); ++y)
        scaleCoverage(result.mutableRow(y), plane.row(y), std::uint8_t(std::lround(factor * 255)), bounds.width);
    return result;
}

void addShadow(ClipShape& shape, const ClipShapeKey& key, const std::optional<RoundedCornerMask::Placed>& mask) {
    const QRectF canvasRect(QPointF(), key.canvas);
    const auto geometry = shadowGeometry(key.shadow, key.videoRect, canvasRect);
    if (!geometry || !(geometry->opacity > 0) || geometry->rect.isEmpty())
        return;
    const RGBAColor color = cleaned(key.shadow.color);
    shape.shadowColor = premultiplied({color.red, color.green, color.blue, 1});
    const double alpha = geometry->opacity * color.alpha * key.opacity;

    std::optional<PlacedMask> moved;
    if (mask) {
        moved = mask->placement();
        moved->left += geometry->rect.left() - key.videoRect.left();
        moved->top += geometry->rect.bottom() - key.videoRect.bottom();
    }
    const PixelRect canvas{0, 0, key.canvas.width(), key.canvas.height()};
    const bool isBlurred = geometry->blur > 0;
    // What lies outside the canvas is blurred into it, from as far as a canvas away at most.
    const int margin =
        isBlurred ? int(std::min(geometry->blur * 4 + 4, 4.0 * std::max(canvas.width, canvas.height))) : 0;
    const Coverage outline(toEdges(geometry->rect), moved ? &*moved : nullptr,
                           {-margin, -margin, canvas.width + 2 * margin, canvas.height + 2 * margin});
    shape.shadow =
        isBlurred ? blurredMask(outline.plane(), geometry->blur, alpha, canvas) : faded(outline.plane(), alpha);
}

} // namespace

bool operator==(const ClipShapeKey& a, const ClipShapeKey& b) {
    return exactParts(a.videoRect) == exactParts(b.videoRect) && a.canvas == b.canvas &&
           a.cornerRadiusFraction == b.cornerRadiusFraction && a.shadow == b.shadow && a.opacity == b.opacity;
}

ClipShape makeClipShape(const ClipShapeKey& key) {
    const auto mask = cornerMask(key);
    const auto placed = mask ? std::optional(mask->placement()) : std::nullopt;
    ClipShape shape;
    shape.coverage =
        Coverage(toEdges(key.videoRect), placed ? &*placed : nullptr, {0, 0, key.canvas.width(), key.canvas.height()});
    addShadow(shape, key, mask);
    shape.halfCoverage = Coverage(halved(shape.coverage.plane()));
    shape.halfShadow = halved(shape.shadow);
    shape.planarShadowColor = planarColor(shape.shadowColor);
    return shape;
}

void blendShadowRow(const ClipShape& shape, int y, std::uint8_t* row) {
    constexpr std::ptrdiff_t bytesPerPixel = 4;
    const PixelRect& bounds = shape.shadow.bounds();
    if (y >= bounds.y && y < bounds.bottom())
        blendColorCovered(row + bounds.x * bytesPerPixel, shape.shadowColor, shape.shadow.row(y), bounds.width);
}

std::shared_ptr<const ClipShape> ClipShapeCache::find(const ClipShapeKey& key) {
    const auto known =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.key == key; });
    if (known != m_entries.end()) {
        m_entries.splice(m_entries.begin(), m_entries, known);
        return m_entries.front().shape;
    }
    m_entries.push_front({key, std::make_shared<const ClipShape>(makeClipShape(key))});
    if (m_entries.size() > maximumCount)
        m_entries.pop_back();
    return m_entries.front().shape;
}

} // namespace keldra
