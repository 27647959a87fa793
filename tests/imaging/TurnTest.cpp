#include "imaging/Turn.h"

#include "imaging/Pictures.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::noise;
using test::pixelAt;

TEST(Turn, EveryPixelGoesWhereTheTransformSays) {
    const PixelBuffer source = noise(21, 13, 1);
    PixelBuffer turned;
    for (const bool isMirrored : {false, true})
        for (int quarterTurns = 0; quarterTurns < 4; ++quarterTurns) {
            const Turn turn{isMirrored, quarterTurns};
            turnPicture(source, turn, turned);
            ASSERT_EQ(turned.width(), turn.swapsSides() ? 13 : 21);
            const AffineTransform t = turnTransform(turn, {21, 13});
            for (int y = 0; y < 13; ++y)
                for (int x = 0; x < 21; ++x) {
                    const double toX = t.a * (x + 0.5) + t.c * (y + 0.5) + t.tx;
                    const double toY = t.b * (x + 0.5) + t.d * (y + 0.5) + t.ty;
                    ASSERT_EQ(pixelAt(turned, int(toX), int(toY)), pixelAt(source, x, y))
                        << quarterTurns << (isMirrored ? " mirrored" : "") << " at " << x << ", " << y;
                }
            const PixelBuffer drawn = drawTransformed(source, t, {0, 0, turned.width(), turned.height()});
            for (int y = 0; y < turned.height(); ++y)
                for (int x = 0; x < turned.width(); ++x)
                    ASSERT_EQ(pixelAt(drawn, x, y), pixelAt(turned, x, y));
        }
}

TEST(Turn, AnyTransformIsTransparentOutside) {
    const PixelBuffer source = test::flat(10, 10, {10, 20, 30, 255});
    const double root = 0.70710678118654752;
    const AffineTransform diagonal{root, root, -root, root, 20, 0};
    const PixelBuffer drawn = drawTransformed(source, diagonal, {10, -2, 20, 20});
    EXPECT_EQ(pixelAt(drawn, 10, 9), (test::Pixel{10, 20, 30, 255}));
    EXPECT_EQ(pixelAt(drawn, 0, 0), (test::Pixel{0, 0, 0, 0}));
    EXPECT_EQ(pixelAt(drawn, 19, 19), (test::Pixel{0, 0, 0, 0}));
    EXPECT_FALSE(drawTransformed(source, {0, 0, 0, 0, 0, 0}, {0, 0, 5, 5}));
}

} // namespace
} // namespace keldra
