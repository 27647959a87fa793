#include "imaging/GreyPlane.h"

#include <algorithm>

namespace keldra {
namespace {

/// Rounded down, for negative numbers too.
int half(int value) {
    return value >> 1;
}

/// Adds what row `y` gives to each block.
void addRow(const GreyPlane& plane, int y, int firstBlock, std::vector<std::uint16_t>& sums) {
    const PixelRect& bounds = plane.bounds();
    if (y < bounds.y || y >= bounds.bottom())
        return;
    const std::uint8_t* row = plane.row(y);
    for (int x = 0; x < bounds.width; ++x)
        sums[std::size_t(half(bounds.x + x) - firstBlock)] += row[x];
}

} // namespace

GreyPlane halved(const GreyPlane& plane) {
    const PixelRect& bounds = plane.bounds();
    if (bounds.isEmpty())
        return {};
    const int left = half(bounds.x);
    const int top = half(bounds.y);
    GreyPlane result({left, top, half(bounds.right() + 1) - left, half(bounds.bottom() + 1) - top});
    std::vector<std::uint16_t> sums(std::size_t(result.bounds().width));
    for (int y = top; y < result.bounds().bottom(); ++y) {
        std::fill(sums.begin(), sums.end(), std::uint16_t(0));
        addRow(plane, 2 * y, left, sums);
        addRow(plane, 2 * y + 1, left, sums);
        std::transform(sums.begin(), sums.end(), result.mutableRow(y),
                       [](std::uint16_t sum) { return std::uint8_t((sum + 2) / 4); });
    }
    return result;
}

} // namespace keldra
