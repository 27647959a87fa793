#pragma once

#include "imaging/GreyPlane.h"
#include "imaging/PixelBuffer.h"

#include <vector>

namespace keldra {

/// Samples of one or more channels as floats, interleaved: what a blur works on.
struct FloatPlane {
    int width = 0;
    int height = 0;
    int channels = 1;
    std::vector<float> samples;

    FloatPlane(int columns, int lines, int channelCount)
        : width(columns)
        , height(lines)
        , channels(channelCount)
        , samples(std::size_t(columns) * std::size_t(lines) * std::size_t(channelCount)) {}
    std::size_t rowLength() const { return std::size_t(width) * std::size_t(channels); }
    float* row(int y) { return samples.data() + std::size_t(y) * rowLength(); }
    const float* row(int y) const { return samples.data() + std::size_t(y) * rowLength(); }
};

/// A blur computed on a coarser grid: a wide Gaussian leaves nothing that a fine grid would be needed for.
///
/// Pixels are averaged in cells of `cell` by `cell`, blurred there, and interpolated back bilinearly. Averaging and
/// interpolating blur too, by a variance of cell^2 / 12 and cell^2 / 6, which the Gaussian gives up.
struct BlurGrid {
    /// Pixels per cell; 1 for narrow blurs.
    int cell = 1;
    /// Sigma that is left to the Gaussian, in cells.
    double sigma = 0;
    /// Cells beyond which a sample has no effect.
    int reach = 0;

    explicit BlurGrid(double sigmaPixels);
};

/// Convolves with a Gaussian of that sigma, in samples, cut at three sigma. Samples beyond the sides repeat the last.
void blurGaussian(FloatPlane& plane, double sigma);

/// Interpolates between the cells of a blurred plane, row by row. Keeps a reference to the plane.
class CellExpander {
public:
    /// Rows start `x` pixels right of the plane's first cell and are `width` pixels long; values are multiplied by
    /// `gain`.
    CellExpander(const FloatPlane& plane, int cell, int x, int width, double gain);
    /// Writes the row `y` pixels below the plane's first cell, with the plane's channels, rounded to nearest.
    void writeRow(int y, std::uint8_t* target);

private:
    const FloatPlane& m_plane;
    int m_cell;
    float m_gain;
    /// Per value of a row: the left one of two samples, and the weight of the right one.
    std::vector<int> m_left;
    std::vector<float> m_weights;
    std::vector<float> m_line;
};

/// The mask blurred by `sigma` pixels and multiplied by `gain` (0 to 1), as far as it lies inside `clip`. Outside its
/// bounds the mask is zero.
GreyPlane blurredMask(const GreyPlane& mask, double sigma, double gain, const PixelRect& clip);

} // namespace keldra
