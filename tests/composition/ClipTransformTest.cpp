#include "composition/ClipTransform.h"

#include "composition/LayerPlacement.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

constexpr double nearlyNothing = 1e-8;

void expectNear(const QRectF& actual, const QRectF& expected, const char* name) {
    EXPECT_NEAR(actual.left(), expected.left(), nearlyNothing) << name;
    EXPECT_NEAR(actual.top(), expected.top(), nearlyNothing) << name;
    EXPECT_NEAR(actual.width(), expected.width(), nearlyNothing) << name;
    EXPECT_NEAR(actual.height(), expected.height(), nearlyNothing) << name;
}

TEST(ClipTransform, PlacesThePictureUpright) {
    const QTransform quarter(0, 1, -1, 0, 1080, 0);
    const QTransform unshifted(0, 1, -1, 0, 0, 0);
    const double tenth = 0.1;
    const double bar = (100 - 101 * 50 / 51.0) / 2;
    struct Row {
        const char* name;
        QTransform preferred;
        QSizeF natural;
        QSize canvas;
        double paddingFraction;
        ContentFit fit;
        QRectF expected;
        /// Where the picture's own top left corner goes.
        QPointF corner;
    };
    const auto fit = ContentFit::fit;
    const auto fill = ContentFit::fill;
    const Row rows[] = {
        {"as it is", {}, {1920, 1080}, {1920, 1080}, 0, fit, {0, 0, 1920, 1080}, {0, 0}},
        {"fresh project", {}, {1920, 1080}, {1920, 1080}, 0.05, fit, {96, 54, 1728, 972}, {96, 54}},
        {"padded square", {}, {100, 100}, {200, 100}, tenth, fit, {60, 10, 80, 80}, {60, 10}},
        {"turned", quarter, {1920, 1080}, {1080, 1920}, 0, fit, {0, 0, 1080, 1920}, {1080, 0}},
        {"unshifted", unshifted, {1920, 1080}, {1080, 1920}, 0, fit, {0, 0, 1080, 1920}, {1080, 0}},
        {"mirrored", {-1, 0, 0, 1, 50, 0}, {50, 50}, {100, 100}, 0, fit, {0, 0, 100, 100}, {100, 0}},
        {"fill passes the canvas", {}, {200, 100}, {100, 100}, 0, fill, {-50, 0, 200, 100}, {-50, 0}},
        {"fill passes the padding", {}, {200, 100}, {100, 100}, tenth, fill, {-30, 10, 160, 80}, {-30, 10}},
        {"odd source", {}, {101, 51}, {100, 50}, 0, fit, {bar, 0, 100 - 2 * bar, 50}, {bar, 0}},
    };
    for (const Row& row : rows) {
        CanvasStyle style;
        const double fraction = row.paddingFraction;
        style.paddingFraction = {fraction, fraction, fraction, fraction};
        style.videoFit = row.fit;
        const ClipTransform place = clipTransform(row.preferred, row.natural, row.canvas, style);
        EXPECT_TRUE(place.isVisible) << row.name;
        expectNear(place.transform.mapRect(QRectF(QPointF(), row.natural)), row.expected, row.name);
        const QPointF corner = place.transform.map(QPointF());
        EXPECT_NEAR(corner.x(), row.corner.x(), nearlyNothing) << row.name;
        EXPECT_NEAR(corner.y(), row.corner.y(), nearlyNothing) << row.name;
    }
}

TEST(LayerPlacement, TakesTransformsApart) {
    const QSize size(40, 20);
    struct Row {
        const char* name;
        QTransform transform;
        Turn turn;
    };
    const Row rows[] = {
        {"none", {2, 0, 0, 3, 5, 6}, {false, 0}},
        {"mirrored", {-2, 0, 0, 3, 5, 6}, {true, 0}},
        {"half", {-2, 0, 0, -3, 5, 6}, {false, 2}},
        {"upside down", {2, 0, 0, -3, 5, 6}, {true, 2}},
        {"right", {0, 3, -2, 0, 5, 6}, {false, 1}},
        {"left", {0, -3, 2, 0, 5, 6}, {false, 3}},
        {"right, mirrored", {0, -3, -2, 0, 5, 6}, {true, 1}},
        {"left, mirrored", {0, 3, 2, 0, 5, 6}, {true, 3}},
        {"cosine dust", {6e-17, 3, -2, 6e-17, 5, 6}, {false, 1}},
    };
    for (const Row& row : rows) {
        const auto axes = axisPlacement(row.transform, size);
        ASSERT_TRUE(axes) << row.name;
        EXPECT_EQ(axes->turn, row.turn) << row.name;
        // Turning and placing is what the transform does.
        const AffineTransform t = turnTransform(axes->turn, {40, 20});
        for (const QPointF corner : {QPointF(0, 0), QPointF(40, 0), QPointF(7, 20)}) {
            const double x = (t.a * corner.x() + t.c * corner.y() + t.tx) * axes->placement.scaleX;
            const double y = (t.b * corner.x() + t.d * corner.y() + t.ty) * axes->placement.scaleY;
            EXPECT_NEAR(x + axes->placement.offsetX, row.transform.map(corner).x(), nearlyNothing) << row.name;
            EXPECT_NEAR(y + axes->placement.offsetY, row.transform.map(corner).y(), nearlyNothing) << row.name;
        }
    }
    EXPECT_FALSE(axisPlacement(QTransform().rotate(30), size));
    EXPECT_FALSE(axisPlacement(QTransform::fromScale(0, 1), size));
    EXPECT_FALSE(axisPlacement(QTransform::fromScale(std::numeric_limits<double>::infinity(), 1), size));
}

} // namespace
} // namespace keldra
