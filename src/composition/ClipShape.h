#pragma once

#include "imaging/Blend.h"
#include "imaging/Coverage.h"
#include "project/CanvasStyle.h"

#include <QRectF>
#include <QSize>

#include <array>
#include <cstdint>
#include <list>
#include <memory>

namespace keldra {

/// What a clip's outline is made from. Canvas pixels, y down.
struct ClipShapeKey {
    QRectF videoRect;
    QSize canvas;
    double cornerRadiusFraction = 0;
    CanvasShadow shadow;
    /// A fainter clip casts a fainter shadow.
    double opacity = 1;
    friend bool operator==(const ClipShapeKey& a, const ClipShapeKey& b);
};

/// The pixels that a clip covers, and its shadow.
struct ClipShape {
    Coverage coverage;
    /// Empty bounds when there is none.
    GreyPlane shadow;
    PremultipliedColor shadowColor;
    /// Both at half size, for planes of chroma.
    Coverage halfCoverage;
    GreyPlane halfShadow;
    /// The shadow's colour as 4:2:0 numbers.
    std::array<std::uint8_t, 3> planarShadowColor{};
};

/// Lays the shadow on row `y` of a BGRA picture of the canvas.
void blendShadowRow(const ClipShape& shape, int y, std::uint8_t* row);

ClipShape makeClipShape(const ClipShapeKey& key);

/// Keeps the shapes used last. One thread.
class ClipShapeCache {
public:
    std::shared_ptr<const ClipShape> find(const ClipShapeKey& key);

private:
    struct Entry {
        ClipShapeKey key;
        std::shared_ptr<const ClipShape> shape;
    };
    static constexpr std::size_t maximumCount = 8;
    /// Used last comes first.
    std::list<Entry> m_entries;
};

} // namespace keldra
