#pragma once

#include "imaging/PixelBuffer.h"

#include <cstdint>
#include <vector>

namespace keldra {

/// Where a picture lies on a target, axis by axis: target = source * scale + offset. Scales are positive.
struct Placement {
    double scaleX = 1;
    double scaleY = 1;
    double offsetX = 0;
    double offsetY = 0;
    friend bool operator==(const Placement&, const Placement&) = default;
};

/// How many pixels are averaged into one before a picture is scaled: only one that shrinks by more than two has any.
int reductionFor(double scale);

/// Gives a placed BGRA picture row by row, so that a row is still in the nearest cache when it is blended. Pixels count
/// by their centres and are interpolated bilinearly (to 1/128 of a pixel); a picture that shrinks by more than two is
/// averaged by whole factors first. Beyond the picture its edge repeats.
///
/// One thread. Keeps its memory between pictures: nothing is allocated while the geometry stays.
class RowResampler {
public:
    /// Starts a picture; rows are given over the columns [left, left + width) of the target.
    void begin(const PixelBuffer& source, const Placement& placement, int left, int width);
    /// Row `y` of the target, `width` pixels; good until the next call. Quickest when rows are asked from the top down.
    const std::uint8_t* row(int y);
    /// Lets go of the picture.
    void end() { m_source = {}; }

private:
    void prepareColumns();
    const std::uint8_t* scaledLine(int line, int keep);

    PixelBuffer m_source;
    PixelBuffer m_reduced;
    Placement m_placement;
    int m_left = 0;
    int m_width = 0;

    /// What the tables below were made for.
    struct ColumnKey {
        int sourceWidth = 0;
        double scale = 0;
        double offset = 0;
        int left = 0;
        int width = 0;
        friend bool operator==(const ColumnKey&, const ColumnKey&) = default;
    };
    ColumnKey m_columnKey;
    /// Per target column: the left one of two source columns, and both weights (of 128), four times over.
    std::vector<std::int32_t> m_columns;
    std::vector<std::uint64_t> m_weights;
    /// Set when every column falls on one source pixel: the first of them; rows are then read in place.
    int m_directColumn = -1;

    struct Line {
        int number = -1;
        std::vector<std::uint8_t> pixels;
    };
    Line m_lines[2];
    std::vector<std::uint8_t> m_row;
};

/// The mean of each block of `factorX` by `factorY` pixels, as many as there are; blocks at the right and bottom may be
/// smaller. BGRA. `target` keeps its memory when its size fits.
void reduceByMean(const PixelBuffer& source, int factorX, int factorY, PixelBuffer& target);

} // namespace keldra
