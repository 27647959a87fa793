#pragma once

#include "imaging/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace keldra {

/// 8-bit values over a rectangle of pixels: a mask, where 0 is cut and 255 is kept.
class GreyPlane {
public:
    GreyPlane() = default;
    /// All zero.
    explicit GreyPlane(const PixelRect& bounds)
        : m_bounds(bounds), m_values(bounds.isEmpty() ? 0 : std::size_t(bounds.width) * std::size_t(bounds.height)) {}

    /// The pixels covered; what lies outside counts as 0.
    const PixelRect& bounds() const { return m_bounds; }
    /// The values of row `y` (in the space of the bounds), from the left bound on.
    const std::uint8_t* row(int y) const { return m_values.data() + offset(y); }
    std::uint8_t* mutableRow(int y) { return m_values.data() + offset(y); }
    std::uint8_t valueAt(int x, int y) const {
        const bool inside = x >= m_bounds.x && x < m_bounds.right() && y >= m_bounds.y && y < m_bounds.bottom();
        return inside ? row(y)[x - m_bounds.x] : 0;
    }

private:
    std::size_t offset(int y) const { return std::size_t(y - m_bounds.y) * std::size_t(m_bounds.width); }

    PixelRect m_bounds;
    std::vector<std::uint8_t> m_values;
};

/// The plane at half its size: the mean of each block of two by two pixels that begins on even coordinates.
GreyPlane halved(const GreyPlane& plane);

} // namespace keldra
