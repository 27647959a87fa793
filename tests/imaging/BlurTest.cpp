#include "imaging/Blur.h"

#include <cmath>
#include <gtest/gtest.h>

namespace keldra {
namespace {

double gaussianStep(double distance, double sigma) {
    return 0.5 * std::erfc(-distance / sigma / std::sqrt(2.0));
}

GreyPlane fullMask(const PixelRect& bounds) {
    GreyPlane mask(bounds);
    for (int y = bounds.y; y < bounds.bottom(); ++y)
        std::fill_n(mask.mutableRow(y), bounds.width, std::uint8_t(255));
    return mask;
}

TEST(Blur, EdgesOfAMaskFollowTheGaussian) {
    for (const double sigma : {1.5, 2.0, 5.9, 6.1, 27.0, 88.0}) {
        // Far larger than the blur, so that one side can be looked at alone; at an odd place on the grid.
        const int side = int(sigma * 10) + 20;
        const PixelRect bounds{37, 11, side, side};
        const PixelRect clip{0, 0, 2 * side + 100, 2 * side + 100};
        for (const double gain : {1.0, 0.45}) {
            const GreyPlane blurred = blurredMask(fullMask(bounds), sigma, gain, clip);
            const int middle = bounds.y + side / 2;
            for (int x = 0; x < bounds.x + side / 2; ++x)
                ASSERT_NEAR(blurred.valueAt(x, middle), 255 * gain * gaussianStep(x + 0.5 - bounds.x, sigma), 1.6)
                    << "sigma " << sigma << " at " << x - bounds.x;
            for (int step = 0; step < side / 2; ++step)
                ASSERT_NEAR(blurred.valueAt(bounds.x + step, middle),
                            blurred.valueAt(middle - bounds.y + bounds.x, bounds.y + step), 1)
                    << "sigma " << sigma << ": rows and columns differ at " << step;
        }
    }
}

TEST(Blur, WhatLiesOutsideTheClipIsBlurredIn) {
    const GreyPlane mask = fullMask({-100, -100, 100, 300});
    const GreyPlane blurred = blurredMask(mask, 10, 1, {0, 0, 50, 50});
    EXPECT_NEAR(blurred.valueAt(0, 20), 255 * gaussianStep(-0.5, 10), 1.5);
    EXPECT_EQ(blurred.bounds(), (PixelRect{0, 0, 36, 50}.intersection(blurred.bounds())));
    EXPECT_TRUE(blurredMask(mask, 1, 1, {500, 0, 50, 50}).bounds().isEmpty());
    EXPECT_TRUE(blurredMask(GreyPlane(), 1, 1, {0, 0, 50, 50}).bounds().isEmpty());
    // As good as endless.
    EXPECT_EQ(blurredMask(mask, 1e12, 1, {0, 0, 50, 50}).valueAt(3, 3), 0);
}

TEST(Blur, SidesRepeatAndSumsStay) {
    FloatPlane flat(9, 5, 4);
    std::fill(flat.samples.begin(), flat.samples.end(), 50.0f);
    blurGaussian(flat, 3.3);
    for (const float value : flat.samples)
        ASSERT_NEAR(value, 50, 1e-3);

    FloatPlane point(41, 41, 1);
    point.row(20)[20] = 1000;
    blurGaussian(point, 3);
    double sum = 0;
    for (const float value : point.samples)
        sum += value;
    EXPECT_NEAR(sum, 1000, 0.1);
    EXPECT_NEAR(point.row(20)[20], 1000 / (2 * std::acos(-1.0) * 9), 0.15);
}

} // namespace
} // namespace keldra
