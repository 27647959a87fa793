#include "imaging/Blur.h"

#include "imaging/Kernel.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// Cells per sigma at least, so that bilinear interpolation between them cannot be seen.
constexpr double cellsPerSigma = 3;
constexpr double reachInSigmas = 3;
/// Nothing on the largest canvas is left of a mask that is blurred further.
constexpr double maximumSigma = 60000;

std::vector<float> gaussianTaps(double sigma) {
    const int reach = int(std::ceil(sigma * reachInSigmas));
    std::vector<double> taps(std::size_t(reach) + 1);
    double sum = 0;
    for (int at = 0; at <= reach; ++at) {
        taps[std::size_t(at)] = std::exp(-0.5 * at * at / (sigma * sigma));
        sum += taps[std::size_t(at)] * (at == 0 ? 1 : 2);
    }
    std::vector<float> normalized;
    for (const double tap : taps)
        normalized.push_back(float(tap / sum));
    return normalized;
}

KELDRA_ROW_KERNEL void weighted(float* __restrict sums, const float* __restrict values, float weight,
                                std::size_t count) {
    for (std::size_t at = 0; at < count; ++at)
        sums[at] = values[at] * weight;
}

KELDRA_ROW_KERNEL void addWeightedPair(float* __restrict sums, const float* __restrict a, const float* __restrict b,
                                       float weight, std::size_t count) {
    for (std::size_t at = 0; at < count; ++at)
        sums[at] += (a[at] + b[at]) * weight;
}

void blurRows(FloatPlane& plane, const std::vector<float>& taps) {
    const int reach = int(taps.size()) - 1;
    const std::size_t channels = std::size_t(plane.channels);
    std::vector<float> padded(plane.rowLength() + 2 * std::size_t(reach) * channels);
    float* const middle = padded.data() + std::size_t(reach) * channels;
    for (int y = 0; y < plane.height; ++y) {
        float* row = plane.row(y);
        std::copy(row, row + plane.rowLength(), middle);
        for (int at = 0; at < reach; ++at) {
            std::copy(row, row + channels, padded.data() + std::size_t(at) * channels);
            std::copy(row + plane.rowLength() - channels, row + plane.rowLength(),
                      middle + plane.rowLength() + std::size_t(at) * channels);
        }
        weighted(row, middle, taps[0], plane.rowLength());
        for (int at = 1; at <= reach; ++at)
            addWeightedPair(row, middle - std::size_t(at) * channels, middle + std::size_t(at) * channels,
                            taps[std::size_t(at)], plane.rowLength());
    }
}

void blurColumns(FloatPlane& plane, const std::vector<float>& taps) {
    const int reach = int(taps.size()) - 1;
    const FloatPlane source = plane;
    for (int y = 0; y < plane.height; ++y) {
        float* row = plane.row(y);
        weighted(row, source.row(y), taps[0], plane.rowLength());
        for (int at = 1; at <= reach; ++at)
            addWeightedPair(row, source.row(std::max(y - at, 0)), source.row(std::min(y + at, plane.height - 1)),
                            taps[std::size_t(at)], plane.rowLength());
    }
}

/// Where a pixel's centre lies between the centres of cells.
double cellPosition(int pixel, int cell, int count) {
    return std::clamp((pixel + 0.5) / cell - 0.5, 0.0, double(count - 1));
}

KELDRA_ROW_KERNEL void mixLines(const float* __restrict upper, const float* __restrict lower, float weight, float gain,
                                float* __restrict mixed, std::size_t count) {
    for (std::size_t at = 0; at < count; ++at)
        mixed[at] = (upper[at] + (lower[at] - upper[at]) * weight) * gain;
}

KELDRA_ROW_KERNEL void mixNeighbours(const float* __restrict line, int channels, const int* __restrict left,
                                     const float* __restrict weights, std::uint8_t* __restrict target,
                                     std::size_t count) {
    for (std::size_t at = 0; at < count; ++at) {
        const float first = line[left[at]];
        const float value = first + (line[left[at] + channels] - first) * weights[at] + 0.5f;
        const float raised = value < 0 ? 0 : value;
        target[at] = std::uint8_t(int(raised > 255 ? 255 : raised));
    }
}

int floorDivide(int value, int divisor) {
    return value >= 0 ? value / divisor : -((divisor - 1 - value) / divisor);
}

/// The mask's mean in every cell of a grid whose first cell starts at (left, top).
FloatPlane cellMeans(const GreyPlane& mask, int left, int top, int columns, int lines, int cell) {
    FloatPlane means(columns, lines, 1);
    const PixelRect bounds = mask.bounds().intersection({left, top, columns * cell, lines * cell});
    const float share = 1.0f / float(cell * cell);
    for (int y = bounds.y; y < bounds.bottom(); ++y) {
        const std::uint8_t* values = mask.row(y) - mask.bounds().x;
        float* row = means.row((y - top) / cell);
        for (int x = bounds.x; x < bounds.right();) {
            const int column = (x - left) / cell;
            const int end = std::min(left + (column + 1) * cell, bounds.right());
            int sum = 0;
            for (; x < end; ++x)
                sum += values[x];
            row[column] += float(sum) * share;
        }
    }
    return means;
}

} // namespace

BlurGrid::BlurGrid(double sigmaPixels) {
    const double wanted = std::min(sigmaPixels, maximumSigma);
    cell = std::max(1, int(wanted / cellsPerSigma));
    const double inCells = wanted / cell;
    sigma = cell == 1 ? inCells : std::sqrt(inCells * inCells - 0.25);
    reach = int(std::ceil(inCells * reachInSigmas)) + 2;
}

void blurGaussian(FloatPlane& plane, double sigma) {
    if (!(sigma > 0) || plane.width == 0 || plane.height == 0)
        return;
    const std::vector<float> taps = gaussianTaps(sigma);
    blurRows(plane, taps);
    blurColumns(plane, taps);
}

CellExpander::CellExpander(const FloatPlane& plane, int cell, int x, int width, double gain)
    : m_plane(plane), m_cell(cell), m_gain(float(gain)), m_line(plane.rowLength() + std::size_t(plane.channels)) {
    const int channels = plane.channels;
    m_left.reserve(std::size_t(width * channels));
    m_weights.reserve(std::size_t(width * channels));
    for (int at = 0; at < width; ++at) {
        const double column = cellPosition(x + at, cell, plane.width);
        for (int channel = 0; channel < channels; ++channel) {
            m_left.push_back(int(column) * channels + channel);
            m_weights.push_back(float(column - std::floor(column)));
        }
    }
}

void CellExpander::writeRow(int y, std::uint8_t* target) {
    const double line = cellPosition(y, m_cell, m_plane.height);
    const int upper = int(line);
    const int lower = std::min(upper + 1, m_plane.height - 1);
    mixLines(m_plane.row(upper), m_plane.row(lower), float(line - upper), m_gain, m_line.data(), m_plane.rowLength());
    // The last column's right neighbour has no weight, but is read.
    std::fill(m_line.end() - m_plane.channels, m_line.end(), 0.0f);
    mixNeighbours(m_line.data(), m_plane.channels, m_left.data(), m_weights.data(), target, m_left.size());
}

GreyPlane blurredMask(const GreyPlane& mask, double sigma, double gain, const PixelRect& clip) {
    const BlurGrid grid(sigma);
    const int margin = grid.reach * grid.cell;
    const PixelRect around{mask.bounds().x - margin, mask.bounds().y - margin, mask.bounds().width + 2 * margin,
                           mask.bounds().height + 2 * margin};
    const PixelRect seen = around.intersection(clip);
    if (seen.isEmpty() || mask.bounds().isEmpty())
        return {};
    // The grid reaches as far beyond what is seen as the blur brings anything in.
    const int left = floorDivide(seen.x - margin, grid.cell) * grid.cell;
    const int top = floorDivide(seen.y - margin, grid.cell) * grid.cell;
    const int columns = (seen.right() + margin - left) / grid.cell + 1;
    const int lines = (seen.bottom() + margin - top) / grid.cell + 1;
    FloatPlane plane = cellMeans(mask, left, top, columns, lines, grid.cell);
    blurGaussian(plane, grid.sigma);

    GreyPlane blurred(seen);
    CellExpander expander(plane, grid.cell, seen.x - left, seen.width, gain);
    for (int y = seen.y; y < seen.bottom(); ++y)
        expander.writeRow(y - top, blurred.mutableRow(y));
    return blurred;
}

} // namespace keldra
