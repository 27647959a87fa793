#include "composition/CanvasBackgroundRenderer.h"
#include "composition/RoundedCornerMask.h"
#include "imaging/Pictures.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace keldra {
namespace {

using CanvasBackgroundRenderer::backgroundImage;
using test::Pixel;
using test::pixelAt;

constexpr RGBAColor black{0, 0, 0, 1};
constexpr RGBAColor white{1, 1, 1, 1};
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(Background, ColoursAreCleanedAndPremultiplied) {
    const auto at = [](const RGBAColor& color) { return pixelAt(backgroundImage(color, {2, 2}), 1, 1); };
    EXPECT_EQ(at({1, 0.5, 0, 1}), (Pixel{0, 128, 255, 255}));
    EXPECT_EQ(at({7, -3, notANumber, 2}), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(at({1, 0.5, 0, 0.5}), (Pixel{0, 64, 128, 128}));
}

std::vector<int> values(const CanvasGradient& gradient, const QSize& size, std::vector<QPoint> points) {
    const PixelBuffer picture = backgroundImage(gradient, size);
    std::vector<int> blues;
    for (const QPoint& point : points)
        blues.push_back(pixelAt(picture, point.x(), point.y())[0]);
    return blues;
}

TEST(Background, LinearGradientsRunByTheirAngle) {
    const auto linear = [](double angle) {
        return CanvasGradient{CanvasGradient::Kind::linear, black, white, angle, 0};
    };
    // Pixels count by their centres: of four, at 1/8, 3/8, 5/8 and 7/8.
    const std::vector<QPoint> column{{1, 0}, {1, 1}, {1, 2}, {1, 3}};
    const std::vector<QPoint> line{{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    EXPECT_EQ(values(linear(90), {4, 4}, column), (std::vector<int>{223, 159, 96, 32}));
    EXPECT_EQ(values(linear(90), {4, 4}, line), (std::vector<int>{159, 159, 159, 159}));
    EXPECT_EQ(values(linear(0), {4, 4}, line), (std::vector<int>{32, 96, 159, 223}));
    EXPECT_EQ(values(linear(180), {4, 4}, line), (std::vector<int>{223, 159, 96, 32}));
    EXPECT_EQ(values(linear(-90), {4, 4}, column), (std::vector<int>{32, 96, 159, 223}));
    // From the lower left corner to the upper right one.
    const auto corners = values(linear(45), {300, 200}, {{0, 199}, {299, 0}, {0, 0}, {299, 199}});
    EXPECT_LE(corners[0], 1);
    EXPECT_GE(corners[1], 254);
    EXPECT_NEAR(corners[2], 102, 1);
    EXPECT_NEAR(corners[3], 153, 1);
    EXPECT_EQ(values(linear(notANumber), {4, 4}, line), (std::vector<int>{0, 0, 0, 0}));
}

TEST(Background, RadialGradientsReachTheCorners) {
    const auto radial = [](double centerSize) {
        return CanvasGradient{CanvasGradient::Kind::radial, black, white, 90, centerSize};
    };
    // A diagonal of 50 pixels: distances from the middle at 0, half and whole.
    const std::vector<QPoint> points{{40, 30}, {15, 30}, {0, 0}};
    const QSize size(80, 60);
    for (const double none : {0.0, -1.0, notANumber}) {
        const auto open = values(radial(none), size, points);
        EXPECT_NEAR(open[0], 4, 1) << none;
        EXPECT_NEAR(open[1], 125, 1) << none;
        EXPECT_NEAR(open[2], 252, 1) << none;
    }
    const auto half = values(radial(0.5), size, points);
    EXPECT_EQ(half[0], 0);
    EXPECT_LE(half[1], 1);
    EXPECT_EQ(values(radial(1), size, {{10, 10}}), std::vector<int>{0});
    EXPECT_EQ(values(radial(1), {400, 300}, {{0, 0}}), values(radial(0.95), {400, 300}, {{0, 0}}));
    EXPECT_GT(values(radial(1), {400, 300}, {{0, 0}})[0], 240);
}

class PictureTest : public ::testing::Test {
protected:
    CanvasImageBackground pictureOf(const char* name, const QImage& image, ContentFit fit, double blurRadius = 0) {
        const QString path = folder.filePath(name);
        EXPECT_TRUE(image.isNull() || image.save(path));
        return {QUrl::fromLocalFile(path), fit, blurRadius, {0, 0, 1, 1}};
    }
    static QImage plain(int width, int height, const QColor& color) {
        QImage image(width, height, QImage::Format_ARGB32);
        image.fill(color);
        return image;
    }

    QTemporaryDir folder;
    const Pixel fallback{255, 0, 0, 255};
    const Pixel red{0, 0, 255, 255};
};

TEST_F(PictureTest, FillCoversAndTransparencyShowsTheFallback) {
    QImage halves = plain(20, 10, Qt::red);
    for (int y = 0; y < 10; ++y)
        for (int x = 10; x < 20; ++x)
            halves.setPixelColor(x, y, QColor(255, 0, 0, 0));
    const PixelBuffer canvas = backgroundImage(pictureOf("halves.png", halves, ContentFit::fill), {20, 20});
    EXPECT_EQ(pixelAt(canvas, 0, 0), red);
    EXPECT_EQ(pixelAt(canvas, 8, 19), red);
    EXPECT_EQ(pixelAt(canvas, 12, 10), fallback);
}

TEST_F(PictureTest, FitLeavesBarsAndBlurKeepsTheEdges) {
    for (const double sigma : {0.0, 2.0, 30.0, 1e9}) {
        const auto background = pictureOf("square.png", plain(10, 10, Qt::red), ContentFit::fit, sigma);
        const PixelBuffer canvas = backgroundImage(background, {40, 20});
        EXPECT_EQ(pixelAt(canvas, 10, 10), red) << sigma;
        EXPECT_EQ(pixelAt(canvas, 29, 19), red) << sigma;
        EXPECT_EQ(pixelAt(canvas, 9, 10), fallback) << sigma;
        EXPECT_EQ(pixelAt(canvas, 30, 19), fallback) << sigma;
    }
    QImage halves = plain(200, 100, Qt::black);
    for (int y = 0; y < 100; ++y)
        for (int x = 100; x < 200; ++x)
            halves.setPixelColor(x, y, Qt::white);
    for (const double sigma : {3.0, 12.0}) {
        const PixelBuffer canvas = backgroundImage(pictureOf("step.png", halves, ContentFit::fill, sigma), {200, 100});
        for (int x = 0; x < 200; ++x)
            ASSERT_NEAR(pixelAt(canvas, x, 50)[0], 127.5 * std::erfc(-(x + 0.5 - 100) / sigma / std::sqrt(2)), 2.1)
                << "sigma " << sigma << " at " << x;
    }
}

TEST_F(PictureTest, AReadPictureStaysAndAnUnreadableOneIsTriedAgain) {
    const auto background = pictureOf("later.png", {}, ContentFit::fill);
    EXPECT_EQ(pixelAt(backgroundImage(background, {8, 8}), 4, 4), fallback);
    QFile broken(background.url.toLocalFile());
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("no picture");
    broken.close();
    EXPECT_EQ(pixelAt(backgroundImage(background, {8, 8}), 4, 4), fallback);
    pictureOf("later.png", plain(3, 3, Qt::red), ContentFit::fill);
    EXPECT_EQ(pixelAt(backgroundImage(background, {8, 8}), 4, 4), red);
    QFile::remove(background.url.toLocalFile());
    EXPECT_EQ(pixelAt(backgroundImage(background, {8, 8}), 4, 4), red);
}

TEST_F(PictureTest, PhotographsOfManyMegapixelsAreRead) {
    const auto background = pictureOf("large.png", plain(6000, 5900, Qt::red), ContentFit::fill);
    EXPECT_EQ(pixelAt(backgroundImage(background, {8, 8}), 4, 4), red);
}

TEST(RoundedCornerMask, CutsTheCornersOnly) {
    const auto mask = RoundedCornerMask::cachedMask(60, 40, 10);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x) {
            ASSERT_NEAR(mask->valueAt(x, y), mask->valueAt(59 - x, y), 1);
            ASSERT_NEAR(mask->valueAt(x, y), mask->valueAt(x, 39 - y), 1);
            const bool isCorner = (x < 10 || x >= 50) && (y < 10 || y >= 30);
            ASSERT_TRUE(isCorner || mask->valueAt(x, y) == 255) << x << ", " << y;
        }
    EXPECT_EQ(mask->valueAt(0, 0), 0);
    // A radius of half the side is a circle.
    const auto circle = RoundedCornerMask::cachedMask(100, 100, 50);
    double area = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            area += circle->valueAt(x, y) / 255.0;
    EXPECT_NEAR(area, std::acos(-1.0) * 2500, 12);
}

TEST(RoundedCornerMask, LiesAtTheLowerLeftCornerWithoutScaling) {
    const auto placed = RoundedCornerMask::maskImage({10.25, 20, 100.5, 50.5}, 8);
    ASSERT_TRUE(placed);
    EXPECT_EQ(placed->plane->bounds(), (PixelRect{0, 0, 101, 51}));
    EXPECT_EQ(placed->left, 10.25);
    EXPECT_EQ(placed->top, 19.5);
    EXPECT_FALSE(RoundedCornerMask::maskImage({0, 0, 0.4, 300}, 8));
    EXPECT_FALSE(RoundedCornerMask::maskImage({0, 0, 300, 300}, 0));
    EXPECT_FALSE(RoundedCornerMask::maskImage({0, 0, 300, 300}, notANumber));
    EXPECT_FALSE(RoundedCornerMask::maskImage({0, 0, 1e12, 300}, 8));
}

TEST(RoundedCornerMask, OneMaskServesRadiiThatRoundAlikeUntilTheCacheIsThrownAway) {
    const auto first = RoundedCornerMask::cachedMask(64, 64, 12.4);
    EXPECT_EQ(RoundedCornerMask::cachedMask(64, 64, 11.6), first);
    EXPECT_NE(RoundedCornerMask::cachedMask(64, 64, 11.4), first);
    for (int width = 70; RoundedCornerMask::cachedCount() < RoundedCornerMask::maximumCount; ++width)
        (void)RoundedCornerMask::cachedMask(width, 8, 3);
    (void)RoundedCornerMask::cachedMask(300, 8, 3);
    EXPECT_EQ(RoundedCornerMask::cachedCount(), 1u);
    EXPECT_EQ(first->valueAt(32, 32), 255) << "a mask in use lives on";
}

} // namespace
} // namespace keldra
