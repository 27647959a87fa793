// Planes are resampled like the pixels that they stand for.

#include "imaging/PlaneResample.h"

#include "imaging/Pictures.h"

#include <gtest/gtest.h>
#include <random>

namespace keldra {
namespace {

using test::noise;

/// A picture whose three planes hold the first three channels of another; chroma takes every second pixel of them.
PixelBuffer planesOf(const PixelBuffer& pixels) {
    PixelBuffer planes = PixelBuffer::allocate(PixelFormat::i420, pixels.width(), pixels.height());
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < planes.planeHeight(plane); ++y)
            for (int x = 0; x < planes.planeWidth(plane); ++x) {
                const int step = plane == 0 ? 1 : 2;
                planes.mutableRow(plane, y)[x] = pixels.row(0, y * step)[4 * x * step + plane];
            }
    return planes;
}

/// A plane spread over the pixels that its samples stand for.
PixelBuffer spread(const PixelBuffer& planes, int plane) {
    const int step = plane == 0 ? 1 : 2;
    return test::paint(planes.width(), planes.height(), [&](int x, int y) {
        const int value = planes.row(plane, y / step)[x / step];
        return test::Pixel{value, value, value, 255};
    });
}

TEST(PlaneResampler, GivesWhatResamplingThePixelsGives) {
    std::mt19937 random(19);
    std::uniform_real_distribution<double> scale(0.06, 4);
    std::uniform_real_distribution<double> offset(-20, 20);
    const std::pair<int, int> sizes[] = {{2, 2}, {3, 5}, {33, 16}, {61, 40}, {200, 90}, {401, 300}};
    RowResampler pixels;
    PlaneResampler planeRows;
    for (int round = 0; round < 180; ++round) {
        const auto [columns, lines] = sizes[round % 6];
        const PixelBuffer source = planesOf(noise(columns, lines, unsigned(round)));
        const Placement placement{scale(random), scale(random), offset(random), offset(random)};
        const int plane = round / 6 % 3;
        const int step = plane == 0 ? 1 : 2;
        const PixelRect target{int(random() % 9), int(random() % 5), 1 + int(random() % 90), 20};
        planeRows.begin(source, plane, placement, target);
        pixels.begin(spread(source, plane), placement, target.x * step, target.width * step);
        for (int y = target.y; y < target.bottom(); ++y) {
            std::vector<double> expected(std::size_t(target.width));
            for (int line = 0; line < step; ++line) {
                const std::uint8_t* row = pixels.row(y * step + line);
                for (int x = 0; x < target.width * step; ++x)
                    expected[std::size_t(x / step)] += row[4 * x] / double(step * step);
            }
            const std::uint8_t* row = planeRows.row(y);
            for (int x = 0; x < target.width; ++x)
                ASSERT_NEAR(row[x], expected[std::size_t(x)], 4)
                    << "round " << round << ", plane " << plane << ", scale " << placement.scaleX << " x "
                    << placement.scaleY << " at " << x << ", " << y;
        }
    }
}

TEST(PlaneResampler, FlatPlanesStayExact) {
    PixelBuffer source = PixelBuffer::allocate(PixelFormat::i420, 99, 77);
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < source.planeHeight(plane); ++y)
            std::fill_n(source.mutableRow(plane, y), source.planeWidth(plane), std::uint8_t(80 * plane + 90));
    PlaneResampler rows;
    for (const double scale : {0.11, 0.4, 0.7, 1.0, 1.3, 5.0})
        for (int plane = 0; plane < 3; ++plane) {
            rows.begin(source, plane, {scale, scale, 3.3, -1.7}, {0, 0, 50, 30});
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 50; ++x)
                    ASSERT_EQ(rows.row(y)[x], std::uint8_t(80 * plane + 90)) << scale;
        }
}

} // namespace
} // namespace keldra
