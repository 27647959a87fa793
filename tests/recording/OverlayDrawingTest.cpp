#include "doubles/FixedDesktop.h"
#include "recording/FrameDecorator.h"
#include "recording/OverlayMapping.h"
#include "recording/PointerEffectsDrawing.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace keldra {
namespace {

PixelBuffer filled(int width, int height, std::uint32_t colour) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        std::fill_n(reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y)), width, colour);
    return picture;
}

QColor at(const PixelBuffer& picture, int x, int y) {
    return QColor::fromRgb(reinterpret_cast<const std::uint32_t*>(picture.row(0, y))[x]);
}

/// White under a translucent colour, within a step of rounding.
void expectOverWhite(const PixelBuffer& picture, int x, int y, QColor colour, double alpha) {
    const QColor seen = at(picture, x, y);
    const auto over = [alpha](double channel) { return 255 * (1 - alpha) + 255 * channel * alpha; };
    EXPECT_NEAR(seen.red(), over(colour.redF()), 3) << x << "," << y;
    EXPECT_NEAR(seen.green(), over(colour.greenF()), 3) << x << "," << y;
    EXPECT_NEAR(seen.blue(), over(colour.blueF()), 3) << x << "," << y;
}

class OverlayDrawing : public testing::Test {
protected:
    OverlayDrawing() { overlays.space = {QRectF(0, 0, 200, 100), QRectF(0, 0, 200, 100)}; }
    PixelBuffer draw() { return FrameDecorator(200, 100).decorated(white, overlays); }

    PixelBuffer white = filled(200, 100, 0xffffffff);
    FrameOverlays overlays;
};

const QColor lightOuter = QColor::fromRgbF(1.0F, 0.82F, 0.08F);

TEST_F(OverlayDrawing, NothingToSeeIsNoNewFrame) {
    EXPECT_FALSE(draw());
    overlays.effects.cursorLocation = QPointF(20, 20);
    overlays.effects.isClickPressActive = true;
    EXPECT_FALSE(draw()) << "click indicators are off";
    overlays.effects.showsCursorHighlight = true;
    EXPECT_TRUE(draw());
    overlays.effects.cursorLocation = QPointF(201, 20);
    EXPECT_FALSE(draw()) << "outside the frame, though it would reach in";
    overlays.effects.cursorLocation.reset();
    EXPECT_FALSE(draw());
}

TEST_F(OverlayDrawing, TheHighlightIsTwoCirclesAroundThePointer) {
    overlays.effects.showsCursorHighlight = true;
    overlays.effects.cursorLocation = QPointF(60, 70);
    const PixelBuffer frame = draw();
    ASSERT_TRUE(frame);
    const double outer = 0.65 * 0.18 + 0.12;
    // The pointer's row counts from the top; radius 24, and 15.36 inside.
    expectOverWhite(frame, 60 + 20, 30, lightOuter, outer);
    expectOverWhite(frame, 60, 30 - 20, lightOuter, outer);
    EXPECT_EQ(at(frame, 60 + 26, 30), QColor(Qt::white));
    EXPECT_LT(at(frame, 60, 30).blue(), at(frame, 60 + 20, 30).blue() - 30) << "stronger inside";
    EXPECT_EQ(at(white, 60, 30), QColor(Qt::white)) << "the source frame stays as it is";
}

TEST_F(OverlayDrawing, ADotWhilePressedAndARippleThatGrows) {
    overlays.effects.showsClickIndicators = true;
    overlays.effects.cursorLocation = QPointF(40, 50);
    overlays.effects.isClickPressActive = true;
    overlays.effects.clickRipples = {{QPointF(130, 50), 0.5}};
    const PixelBuffer frame = draw();
    ASSERT_TRUE(frame);
    const QColor dot = QColor::fromRgbF(0.48F, 0.48F, 0.48F);
    expectOverWhite(frame, 40, 50, dot, 0.86);
    expectOverWhite(frame, 45, 50, dot, 0.86);
    EXPECT_EQ(at(frame, 48, 50), QColor(Qt::white)) << "radius 6.5";
    // Radius 10 + 12, line 3.4, half faded.
    expectOverWhite(frame, 130, 50, QColor::fromRgbF(0.36F, 0.36F, 0.36F), 0.15);
    EXPECT_LT(at(frame, 130 + 21, 50).red(), 200) << "the outline";
    EXPECT_EQ(at(frame, 130 + 25, 50), QColor(Qt::white));
}

TEST_F(OverlayDrawing, IntensityAndScaleEnlargeAClick) {
    overlays.effects.showsClickIndicators = true;
    overlays.effects.cursorLocation = QPointF(40, 25);
    overlays.effects.isClickPressActive = true;
    overlays.effects.clickIndicatorIntensity = 2;
    overlays.space.source = QRectF(0, 0, 100, 50);
    const PixelBuffer frame = draw();
    ASSERT_TRUE(frame);
    // 2 pixels a point, times 0.65 + 0.35 * 2, times 6.5: 17.5 pixels.
    EXPECT_LT(at(frame, 80 + 16, 50).red(), 160);
    EXPECT_EQ(at(frame, 80 + 19, 50), QColor(Qt::white));
    // On a frame smaller than its source nothing shrinks.
    overlays.space.source = QRectF(0, 0, 400, 200);
    EXPECT_EQ(overlays.space.effectScale(), 1);
}

struct BubbleRow {
    const char* name;
    QRectF bubble;
    QRectF source;
    CameraOverlayShape shape;
    std::optional<BubblePlace> place;
};

class Bubbles : public testing::TestWithParam<BubbleRow> {};

TEST_P(Bubbles, AreMappedByTheirVisiblePart) {
    const BubbleRow& row = GetParam();
    const CameraOverlaySnapshot overlay{true, row.bubble, row.shape, 10};
    EXPECT_EQ(placeBubble(overlay, {row.source, QRectF(0, 0, 400, 200)}), row.place);
    EXPECT_EQ(placeBubble({false, row.bubble, row.shape, 10}, {row.source, QRectF(0, 0, 400, 200)}), std::nullopt);
}

constexpr auto circle = CameraOverlayShape::circle;
constexpr auto square = CameraOverlayShape::roundedSquare;

INSTANTIATE_TEST_SUITE_P(
    , Bubbles,
    testing::Values(
        BubbleRow{"inside", {10, 20, 60, 60}, {0, 0, 400, 200}, circle, BubblePlace{{10, 120, 60, 60}, 30}},
        BubbleRow{"scaled", {10, 20, 30, 30}, {0, 0, 200, 100}, square, BubblePlace{{20, 100, 60, 60}, 20}},
        BubbleRow{"elsewhere", {1010, 520, 60, 60}, {1000, 500, 400, 200}, square, BubblePlace{{10, 120, 60, 60}, 10}},
        BubbleRow{"cutAtTheEdge", {-20, 150, 60, 60}, {0, 0, 400, 200}, circle, BubblePlace{{0, 0, 40, 50}, 20}},
        BubbleRow{"outside", {400, 20, 60, 60}, {0, 0, 400, 200}, circle, std::nullopt},
        BubbleRow{"aPixel", {399, 20, 60, 60}, {0, 0, 400, 200}, circle, std::nullopt},
        BubbleRow{"noSource", {10, 20, 60, 60}, {}, circle, std::nullopt}),
    [](const auto& row) { return row.param.name; });

TEST_F(OverlayDrawing, TheBubbleShowsTheMiddleOfTheCameraInItsShape) {
    // Red, but for a green left and a blue right margin that an aspect fill into a square leaves out.
    PixelBuffer camera = filled(320, 160, 0xffff0000);
    for (int y = 0; y < 160; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(camera.mutableRow(0, y));
        std::fill_n(row, 70, 0xff00ff00);
        std::fill_n(row + 250, 70, 0xff0000ff);
    }
    overlays.cameraPicture = camera;
    for (const auto shape : {circle, square}) {
        overlays.camera = {true, QRectF(20, 10, 80, 80), shape, 80 * 0.16};
        const PixelBuffer frame = draw();
        ASSERT_TRUE(frame);
        EXPECT_EQ(at(frame, 60, 50), QColor(Qt::red));
        EXPECT_EQ(at(frame, 22, 50), QColor(Qt::red));
        EXPECT_EQ(at(frame, 97, 50), QColor(Qt::red));
        EXPECT_EQ(at(frame, 21, 11), QColor(Qt::white)) << "the corner is cut";
        EXPECT_EQ(at(frame, 28, 18), shape == circle ? QColor(Qt::white) : QColor(Qt::red));
        EXPECT_EQ(at(frame, 102, 50), QColor(Qt::white));
    }
    overlays.effects.showsClickIndicators = overlays.effects.isClickPressActive = true;
    overlays.effects.cursorLocation = QPointF(60, 50);
    EXPECT_NEAR(at(draw(), 60, 50).green(), 0.86 * 0.48 * 255, 3) << "clicks lie above the bubble";
}

TEST(OverlayMapping, FollowsAWindowIntoItsBars) {
    FixedScreens screens({Screen{1, "Main", QRectF(0, 0, 640, 360), QRectF(0, 0, 640, 360), 1}});
    FixedWindows windows;
    const WindowSelection window{1, 77, QRectF(10, 20, 300, 200), ""};
    const auto space = [&](const CaptureSelection& selection) {
        return overlaySpaceOf(selection, screens, windows, {0, 0, 640, 360}, 300, 200);
    };
    EXPECT_EQ(space(window).source, window.rect) << "a window that cannot be found is where it was";
    windows.live = QRectF(50, 60, 300, 200);
    EXPECT_EQ(space(window).map(QPointF(50, 260)), QPointF(0, 0));
    windows.live = QRectF(0, 0, 300, 100);
    EXPECT_EQ(space(window).target, QRectF(0, 50, 300, 100));
    EXPECT_EQ(space(window).map(QPointF(150, 50)), QPointF(150, 100));
    EXPECT_TRUE(space(DisplaySelection{9, ""}).isEmpty()) << "a display that is gone";
    EXPECT_EQ(space(RegionSelection{9, QRectF(1, 2, 30, 20)}).source, QRectF(1, 2, 30, 20));
}

TEST(OverlayMapping, FollowsADisplayThatIsMovedAndResized) {
    const QRectF before(0, 0, 640, 360);
    FixedScreens screens({Screen{1, "Main", QRectF(1000, -100, 400, 300), {}, 1}});
    FixedWindows windows;
    const OverlaySpace display = overlaySpaceOf(DisplaySelection{1, ""}, screens, windows, before, 640, 360);
    EXPECT_EQ(display.target, QRectF(80, 0, 480, 360)) << "fitted in, with bars";
    EXPECT_EQ(display.map(QPointF(1000, 200)), QPointF(80, 0));
    // Ten points from the left, twenty from the top.
    const RegionSelection region{1, QRectF(10, 240, 200, 100)};
    EXPECT_EQ(overlaySpaceOf(region, screens, windows, before, 200, 100).source, QRectF(1010, 80, 200, 100));
}

} // namespace
} // namespace keldra
