#include "imaging/Coverage.h"

#include <cmath>
#include <optional>

namespace keldra {
namespace {

/// Distances below what eight bits can show count as none.
constexpr double nearlyNothing = 1.0 / 512;

double snapped(double position) {
    const double nearest = std::round(position);
    return std::abs(position - nearest) < nearlyNothing ? nearest : position;
}

PixelRect touchedPixels(const Edges& shape, const PixelRect& clip) {
    const auto limited = [](double value, int low, int high) {
        return int(std::clamp(value, double(low), double(high)));
    };
    const int left = limited(std::floor(shape.left), clip.x, clip.right());
    const int top = limited(std::floor(shape.top), clip.y, clip.bottom());
    const int right = limited(std::ceil(shape.right), clip.x, clip.right());
    const int bottom = limited(std::ceil(shape.bottom), clip.y, clip.bottom());
    return {left, top, right - left, bottom - top};
}

/// The part of pixel `position` between the two sides, 0 to 1.
double overlap(int position, double low, double high) {
    return std::clamp(std::min(high, position + 1.0) - std::max(low, double(position)), 0.0, 1.0);
}

std::vector<double> overlaps(int first, int count, double low, double high) {
    std::vector<double> parts(std::size_t(count), 1);
    for (int at = 0; at < count; ++at)
        parts[std::size_t(at)] = overlap(first + at, low, high);
    return parts;
}

/// Where a mask lies: whole pixels, and the part of a pixel beyond them as a weight of 256.
struct MaskShift {
    int whole = 0;
    int fraction = 0;

    explicit MaskShift(double position) {
        const double at = snapped(position);
        whole = int(std::floor(at));
        fraction = int(std::lround((at - whole) * 256));
    }
};

/// Reads a mask that lies between pixels row by row, over the columns of `bounds`.
class MaskRows {
public:
    MaskRows(const PlacedMask& mask, const PixelRect& bounds)
        : m_plane(*mask.plane)
        , m_left(mask.left)
        , m_top(mask.top)
        , m_bounds(bounds)
        , m_upper(std::size_t(bounds.width) + 1)
        , m_lower(std::size_t(bounds.width) + 1) {}

    /// Limits the coverage of row `y` to what the mask keeps.
    void limit(int y, std::uint8_t* coverage) {
        read(y - m_top.whole, m_lower);
        if (m_left.fraction == 0 && m_top.fraction == 0) {
            for (int x = 0; x < m_bounds.width; ++x)
                coverage[x] = std::min(coverage[x], m_lower[std::size_t(x) + 1]);
            return;
        }
        read(y - m_top.whole - 1, m_upper);
        const auto across = [this](const std::vector<std::uint8_t>& row, int x) {
            return row[std::size_t(x)] * m_left.fraction + row[std::size_t(x) + 1] * (256 - m_left.fraction);
        };
        for (int x = 0; x < m_bounds.width; ++x) {
            const int upper = across(m_upper, x) * m_top.fraction;
            const int lower = across(m_lower, x) * (256 - m_top.fraction);
            coverage[x] = std::min(coverage[x], std::uint8_t((upper + lower + 32768) >> 16));
        }
    }

private:
    /// Row `line` of the mask, from one pixel left of the bounds on; zero outside the mask.
    void read(int line, std::vector<std::uint8_t>& row) const {
        std::fill(row.begin(), row.end(), std::uint8_t(0));
        const PixelRect& mask = m_plane.bounds();
        const int first = m_bounds.x - m_left.whole - 1;
        const int from = std::max(first, mask.x);
        const int to = std::min(first + int(row.size()), mask.right());
        if (line < mask.y || line >= mask.bottom() || from >= to)
            return;
        const std::uint8_t* values = m_plane.row(line) - mask.x;
        std::copy(values + from, values + to, row.begin() + (from - first));
    }

    const GreyPlane& m_plane;
    const MaskShift m_left;
    const MaskShift m_top;
    const PixelRect m_bounds;
    std::vector<std::uint8_t> m_upper;
    std::vector<std::uint8_t> m_lower;
};

} // namespace

Coverage::Coverage(const Edges& wanted, const PlacedMask* mask, const PixelRect& clip) {
    const Edges shape{snapped(wanted.left), snapped(wanted.top), snapped(wanted.right), snapped(wanted.bottom)};
    if (!(shape.right > shape.left) || !(shape.bottom > shape.top))
        return;
    const PixelRect bounds = touchedPixels(shape, clip);
    if (bounds.isEmpty())
        return;
    m_plane = GreyPlane(bounds);
    const auto columns = overlaps(bounds.x, bounds.width, shape.left, shape.right);
    const auto lines = overlaps(bounds.y, bounds.height, shape.top, shape.bottom);
    std::optional<MaskRows> maskRows;
    if (mask)
        maskRows.emplace(*mask, bounds);
    for (int y = bounds.y; y < bounds.bottom(); ++y) {
        std::uint8_t* row = m_plane.mutableRow(y);
        const double line = lines[std::size_t(y - bounds.y)] * 255;
        for (int x = 0; x < bounds.width; ++x)
            row[x] = std::uint8_t(line * columns[std::size_t(x)] + 0.5);
        // The mask ends where the shape ends, so the smaller of the two is the truth, not their product.
        if (maskRows)
            maskRows->limit(y, row);
    }
    findFullRuns();
}

void Coverage::findFullRuns() {
    const PixelRect bounds = m_plane.bounds();
    m_fullRuns.reserve(std::size_t(bounds.height));
    for (int y = bounds.y; y < bounds.bottom(); ++y) {
        const std::uint8_t* row = m_plane.row(y);
        const int middle = bounds.width / 2;
        int begin = middle;
        int end = middle;
        while (end < bounds.width && row[end] == 255)
            ++end;
        while (end > middle && begin > 0 && row[begin - 1] == 255)
            --begin;
        m_fullRuns.emplace_back(begin, end);
    }
}

} // namespace keldra
