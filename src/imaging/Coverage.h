#pragma once

#include "imaging/GreyPlane.h"

#include <utility>
#include <vector>

namespace keldra {

/// A rectangle with sides anywhere between pixels: origin top left, y down.
struct Edges {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    friend bool operator==(const Edges&, const Edges&) = default;
};

/// A mask laid with its top left corner at any place, without scaling.
struct PlacedMask {
    const GreyPlane* plane = nullptr;
    double left = 0;
    double top = 0;
};

/// How much of each pixel a shape covers.
class Coverage {
public:
    Coverage() = default;
    /// The rectangle, cut by the mask where there is one, as far as it lies inside `clip`. A side between two pixels
    /// covers its pixel in proportion; a mask between pixels is interpolated.
    Coverage(const Edges& shape, const PlacedMask* mask, const PixelRect& clip);
    explicit Coverage(GreyPlane plane) : m_plane(std::move(plane)) { findFullRuns(); }

    const PixelRect& bounds() const { return m_plane.bounds(); }
    bool isEmpty() const { return bounds().isEmpty(); }
    const GreyPlane& plane() const { return m_plane; }
    /// The values of row `y`, from the left bound on.
    const std::uint8_t* row(int y) const { return m_plane.row(y); }
    /// The longest run of wholly covered pixels of row `y` that holds its middle, as offsets from the left bound; empty
    /// when the middle is not wholly covered.
    std::pair<int, int> fullRun(int y) const { return m_fullRuns[std::size_t(y - bounds().y)]; }

private:
    void findFullRuns();

    GreyPlane m_plane;
    std::vector<std::pair<int, int>> m_fullRuns;
};

} // namespace keldra
