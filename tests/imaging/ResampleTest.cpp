#include "imaging/Resample.h"

#include "imaging/Pictures.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::flat;
using test::noise;
using test::paint;
using test::Pixel;

std::vector<int> blues(const std::uint8_t* row, int width) {
    std::vector<int> values;
    for (int x = 0; x < width; ++x)
        values.push_back(row[x * 4]);
    return values;
}

PixelBuffer line(const std::vector<int>& values) {
    return paint(int(values.size()), 1, [&](int x, int) { return Pixel{values[std::size_t(x)], 7, 9, 255}; });
}

TEST(RowResampler, PlacesByPixelCentres) {
    struct Row {
        const char* name;
        std::vector<int> source;
        double scale;
        double offset;
        int left;
        std::vector<int> expected;
    };
    const Row rows[] = {
        {"as it is", {0, 40, 200}, 1, 0, 0, {0, 40, 200}},
        {"moved by whole pixels", {0, 40, 200}, 1, 2, 0, {0, 0, 0, 40, 200, 200}},
        {"a part", {0, 40, 200}, 1, 0, 1, {40, 200}},
        {"doubled", {0, 200}, 2, 0, 0, {0, 50, 150, 200}},
        {"half a pixel on", {0, 200}, 1, 0.5, 0, {0, 100, 200}},
        {"a tenth of a pixel on", {0, 128, 0}, 1, 0.1, 0, {0, 115, 13}},
        {"one column", {90}, 3, 1, 0, {90, 90, 90, 90, 90}},
        {"halved: between two", {0, 100, 200, 0}, 0.5, 0, 0, {50, 100}},
        {"a third: means of three", {0, 30, 60, 90, 0, 0, 50}, 1.0 / 3, 0, 0, {30, 30, 50}},
    };
    for (const Row& row : rows) {
        RowResampler resampler;
        const int width = int(row.expected.size());
        resampler.begin(line(row.source), {row.scale, 1, row.offset, 0}, row.left, width);
        EXPECT_EQ(blues(resampler.row(0), width), row.expected) << row.name;
        EXPECT_EQ(resampler.row(5)[1], 7) << row.name;
    }
}

TEST(RowResampler, FlatColoursStayExact) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> scale(0.05, 6);
    std::uniform_real_distribution<double> offset(-30, 30);
    const Pixel color{1, 128, 254, 255};
    const PixelBuffer source = flat(37, 23, color);
    for (int round = 0; round < 200; ++round) {
        const Placement placement{scale(random), scale(random), offset(random), offset(random)};
        RowResampler resampler;
        const int width = 1 + int(random() % 70);
        resampler.begin(source, placement, int(random() % 20) - 10, width);
        for (const int y : {-3, 0, 1, 2, 40}) {
            const std::uint8_t* row = resampler.row(y);
            for (int at = 0; at < width * 4; ++at)
                ASSERT_EQ(row[at], color[std::size_t(at % 4)]) << "scale " << placement.scaleX << " at " << at;
        }
    }
}

/// What a bilinear reading at exact places gives.
double exactBlue(const PixelBuffer& source, const Placement& placement, int x, int y) {
    const auto at = [](double position, double scale, double offset, int count) {
        return std::clamp((position + 0.5 - offset) / scale - 0.5, 0.0, count - 1.0);
    };
    const double column = at(x, placement.scaleX, placement.offsetX, source.width());
    const double line = at(y, placement.scaleY, placement.offsetY, source.height());
    const int left = std::min(int(column), source.width() - 2);
    const int top = std::min(int(line), source.height() - 2);
    const auto across = [&](int lineNumber) {
        const std::uint8_t* row = source.row(0, lineNumber);
        return row[left * 4] + (row[left * 4 + 4] - row[left * 4]) * (column - left);
    };
    return across(top) + (across(top + 1) - across(top)) * (line - top);
}

TEST(RowResampler, StaysCloseToExactInterpolation) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> scale(0.5, 5);
    std::uniform_real_distribution<double> offset(-20, 20);
    const PixelBuffer source = noise(61, 40, 3);
    RowResampler resampler;
    for (int round = 0; round < 60; ++round) {
        const Placement placement{scale(random), scale(random), offset(random), offset(random)};
        const int left = int(random() % 9) - 4;
        const int width = 1 + int(random() % 90);
        resampler.begin(source, placement, left, width);
        for (int y = -2; y < 50; y += 1 + round % 3) {
            const std::uint8_t* row = resampler.row(y);
            for (int x = 0; x < width; ++x)
                ASSERT_NEAR(row[x * 4], exactBlue(source, placement, left + x, y), 2.6)
                    << "round " << round << " at " << x << ", " << y;
        }
    }
}

TEST(RowResampler, ShrinkingAveragesInsteadOfSkipping) {
    const PixelBuffer checks = paint(64, 64, [](int x, int y) {
        return (x + y) % 2 ? Pixel{255, 255, 255, 255} : Pixel{0, 0, 0, 255};
    });
    RowResampler resampler;
    resampler.begin(checks, {0.23, 0.23, 0.4, 0}, 0, 15);
    for (int y = 0; y < 14; ++y)
        for (const int blue : blues(resampler.row(y), 15))
            ASSERT_NEAR(blue, 128, 1) << "row " << y;
}

TEST(RowResampler, AnotherPictureOfTheSameGeometryIsRead) {
    RowResampler resampler;
    const Placement placement{1.3, 1.3, 0.2, 0.2};
    for (const int value : {10, 200}) {
        resampler.begin(flat(20, 20, {value, 0, 0, 255}), placement, 0, 25);
        EXPECT_EQ(resampler.row(3)[0], value);
        resampler.end();
    }
}

} // namespace
} // namespace keldra
