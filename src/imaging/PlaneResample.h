#pragma once

#include "imaging/PixelBuffer.h"
#include "imaging/Resample.h"

#include <cstdint>
#include <vector>

namespace keldra {

/// Which neighbouring source samples make a target sample along one axis, for a stretch of targets.
struct TapTable {
    /// Weights of one target; a power of two, at least 2.
    int tapCount = 2;
    /// Per target: its first source sample. All taps lie inside the source when it has `tapCount` samples or more.
    std::vector<std::int32_t> firsts;
    /// Per target `tapCount` weights, which sum up to `one`.
    std::vector<std::uint8_t> weights;

    static constexpr int one = 128;

    /// What RowResampler does to pixels, along one axis: bilinear by centres, averaged by whole factors where it
    /// shrinks by more than two. The source has `pixelCount` pixels. With two pixels per sample, samples (of chroma)
    /// are made as if the source's were spread over its pixels, these were resampled and then averaged by twos. Scale
    /// and offset are those of pixels; targets count in samples.
    void make(double scale, double offset, int pixelCount, int pixelsPerSample, int firstTarget, int targetCount);

private:
    std::vector<double> m_exact;
};

/// Gives one placed plane of a 4:2:0 picture row by row: the numbers that resampling its pixels would give, but for
/// rounding. One thread. Keeps its memory between pictures.
class PlaneResampler {
public:
    /// Starts a plane; rows are given over the plane's columns [left, left + width) and lines [top, top + height) of
    /// the target. The placement is that of the picture's pixels.
    void begin(const PixelBuffer& source, int plane, const Placement& placement, const PixelRect& target);
    /// Row `y` of the target; good until the next call. Quickest when rows are asked from the top down.
    const std::uint8_t* row(int y);
    /// Lets go of the picture.
    void end() { m_source = {}; }

private:
    /// What a table was made for.
    struct AxisKey {
        double scale = 0;
        double offset = 0;
        int count = 0;
        int first = 0;
        int targetCount = 0;
        int pixelsPerSample = 0;
        friend bool operator==(const AxisKey&, const AxisKey&) = default;
    };
    struct Axis {
        AxisKey key;
        TapTable taps;
        /// Set when every target is one source sample: how far the first lies into the source.
        int directFirst = -1;
    };
    struct Line {
        int number = -1;
        std::vector<std::uint8_t> samples;
    };
    /// Columns that are made at once from sixteen source bytes.
    struct Group {
        std::uint8_t picks[16];
        std::uint8_t weights[16];
        std::int32_t begin = 0;
    };

    static bool prepareAxis(Axis& axis, const AxisKey& key);
    void prepareGroups();
    void makeLine(const std::uint8_t* source, std::uint8_t* target) const;
    static void makeGroups(const std::vector<Group>& groups, int tapCount, const std::uint8_t* source,
                           std::uint8_t* target);
    const std::uint8_t* scaledLine(int number);

    PixelBuffer m_source;
    int m_plane = 0;
    int m_top = 0;
    int m_width = 0;
    Axis m_columns;
    Axis m_lines;
    /// Empty where sixteen bytes do not suffice.
    std::vector<Group> m_groups;
    /// The lines made last, each in the place of its number.
    std::vector<Line> m_made;
    std::vector<std::uint8_t> m_row;
    std::vector<std::uint16_t> m_sums;
};

} // namespace keldra
