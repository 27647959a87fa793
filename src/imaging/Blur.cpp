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

void expandRow(const FloatPlane& plane, int cell, int x, int y, float gain, std::uint8_t* target, int count) {
    const auto clamped = [](double at, int size) { return std::clamp(at, 0.0, double(size - 1)); };
    const double line = clamped((y + 0.5) / cell - 0.5, plane.height);
    const int upper = int(line);
    const int lower = std::min(upper + 1, plane.height - 1);
    const float lowerWeight = float(line - upper);
    const float* a = plane.row(upper);
    const float* b = plane.row(lower);
    for (int at = 0; at < count; ++at) {
        const double column = clamped((x + at + 0.5) / cell - 0.5, plane.width);
        const int left = int(column);
        const int right = std::min(left + 1, plane.width - 1);
        const float rightWeight = float(column - left);
        for (int channel = 0; channel < plane.channels; ++channel) {
            const auto across = [&](const float* row) {
                const float first = row[left * plane.channels + channel];
                return first + (row[right * plane.channels + channel] - first) * rightWeight;
            };
            const float value = across(a) + (across(b) - across(a)) * lowerWeight;
            target[at * plane.channels + channel] = std::uint8_t(std::clamp(value * gain + 0.5f, 0.0f, 255.0f));
        }
    }
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
    for (int y = seen.y; y < seen.bottom(); ++y)
        expandRow(plane, grid.cell, seen.x - left, y - top, float(gain), blurred.mutableRow(y), seen.width);
    return blurred;
}

} // namespace keldra
