#include "project/CanvasGeometry.h"
#include "project/ZoomEvaluation.h"

#include <gtest/gtest.h>
#include <limits>

namespace keldra {

void PrintTo(const ZoomState& state, std::ostream* out) {
    *out << state.scale << " at " << state.focus.x << ", " << state.focus.y;
}

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(CanvasGeometry, EvenDimensions) {
    const std::pair<double, int> rows[] = {{1921, 1920}, {1, 2},    {-5, 2},         {20000, 7680}, {1e300, 7680},
                                           {3.99, 2},    {5.99, 4}, {notANumber, 2}, {infinity, 2}, {-infinity, 2}};
    for (const auto& [pixels, expected] : rows)
        EXPECT_EQ(evenDimension(pixels), expected) << pixels;
}

TEST(CanvasGeometry, RenderSizes) {
    const std::pair<CanvasSizeSpec, QSize> rows[] = {
        {CanvasOriginalSize{}, {1280, 718}},
        {CanvasPreset::portrait4x5, {1080, 1350}},
        {CanvasPreset::portrait9x16, {1080, 1920}},
        {CanvasCustomSize{1921, 1081}, {1920, 1080}},
        {CanvasCustomSize{20000, 10}, {7680, 10}},
        {CanvasCustomSize{-4, std::numeric_limits<qint64>::max()}, {2, 7680}},
    };
    EditorProject project;
    EXPECT_EQ(renderSize(project), QSize(2, 2));
    project.canvasWidth = 1281;
    project.canvasHeight = 719.5;
    EXPECT_EQ(renderSize(project), QSize(1280, 718));
    project.canvas.emplace();
    for (const auto& [size, expected] : rows) {
        project.canvas->size = size;
        EXPECT_EQ(renderSize(project), expected);
    }
}

TEST(CanvasGeometry, PaddingIsOfTheSmallerSide) {
    EXPECT_EQ(paddingPixels({0.45, 0.05, notANumber, -1}, {1000, 800}), QMarginsF(40, 320, 0, 0));
    EXPECT_EQ(paddingPixels({0.1, 0.1, 0.1, 0.1}, {0, 800}), QMarginsF());
    EXPECT_EQ(paddingPixels({0.1, 0.1, 0.1, 0.1}, {infinity, 800}), QMarginsF());
}

TEST(CanvasGeometry, VideoRects) {
    struct Row {
        const char* name;
        QSizeF source;
        QSizeF canvas;
        QMarginsF insets;
        ContentFit fit;
        QRectF expected;
    };
    const auto fit = ContentFit::fit;
    const auto fill = ContentFit::fill;
    const Row rows[] = {
        {"bars above and below", {100, 50}, {100, 100}, {}, fit, {0, 25, 100, 50}},
        {"fill passes the insets", {160, 90}, {90, 90}, {9, 9, 9, 9}, fill, {-19, 9, 128, 72}},
        {"uneven insets", {100, 100}, {100, 100}, {10, 40, 10, 0}, fit, {20, 40, 60, 60}},
        {"bad insets count as none", {10, 10}, {10, 10}, {-3, notANumber, infinity, 0}, fit, {0, 0, 10, 10}},
        {"no room", {10, 10}, {100, 100}, {50, 0, 50, 0}, fit, {}},
        {"no source", {0, 10}, {100, 100}, {}, fit, {}},
        {"endless source", {infinity, 10}, {100, 100}, {}, fit, {}},
        {"no canvas", {10, 10}, {notANumber, 100}, {}, fit, {}},
        {"scale beyond numbers", {5e-324, 5e-324}, {100, 100}, {}, fill, {}},
    };
    for (const Row& row : rows) {
        const QRectF rect = videoRect(row.source, row.canvas, row.insets, row.fit);
        EXPECT_EQ(rect, row.expected) << row.name << ": " << rect.x() << " " << rect.y() << " " << rect.width() << " "
                                      << rect.height();
    }
}

TEST(CanvasGeometry, CornersShadowsAndPictures) {
    EXPECT_EQ(cornerRadiusPixels(0.02, {0, 0, 300, 200}), 4);
    EXPECT_EQ(cornerRadiusPixels(0.9, {0, 0, 300, 200}), 100);

    const QRectF canvas(0, 0, 400, 200);
    const QRectF video(10, 20, 300, 150);
    CanvasShadow shadow{true, {}, 0.5, 0.05, 0.1};
    EXPECT_EQ(shadowGeometry(shadow, video, canvas), (ShadowGeometry{{10, 40, 300, 150}, 10, 0.5}));
    EXPECT_FALSE(shadowGeometry(shadow, {}, canvas));
    EXPECT_FALSE(shadowGeometry(shadow, video, {}));
    shadow = {true, {}, notANumber, -1, infinity};
    EXPECT_EQ(shadowGeometry(shadow, video, canvas), (ShadowGeometry{video, 0, 0}));
    shadow.opacity = 7;
    EXPECT_EQ(shadowGeometry(shadow, video, canvas)->opacity, 1);
    shadow.isEnabled = false;
    EXPECT_FALSE(shadowGeometry(shadow, video, canvas));

    EXPECT_EQ(imageRect({100, 100}, canvas, ContentFit::fit), QRectF(100, 0, 200, 200));
    EXPECT_EQ(imageRect({100, 100}, canvas, ContentFit::fill), QRectF(0, -100, 400, 400));
    EXPECT_TRUE(imageRect({0, 100}, canvas, ContentFit::fill).isEmpty());
    EXPECT_TRUE(imageRect({100, 100}, {}, ContentFit::fill).isEmpty());
}

ZoomBlock block(double start, double duration, double scale, double ramp, ZoomFocus focus = {}) {
    return {QUuid(), start, duration, scale, focus, ramp};
}

TEST(Zoom, StateAtATime) {
    const ZoomFocus corner{1, 0};
    struct Row {
        const char* name;
        ZoomBlock block;
        double time;
        ZoomState expected;
    };
    const Row rows[] = {
        {"before", block(1, 4, 3, 1), 0.9, {}},
        {"first instant", block(1, 4, 3, 1, corner), 1, {1, corner}},
        {"half a ramp", block(1, 4, 3, 1, corner), 1.5, {2, corner}},
        {"ramp done", block(1, 4, 3, 1), 2, {3, {}}},
        {"half out", block(1, 4, 3, 1), 4.5, {2, {}}},
        {"end is outside", block(1, 4, 3, 1), 5, {}},
        {"short block peaks in its middle", block(0, 1, 3, 0.6), 0.5, {3, {}}},
        {"short block half in", block(0, 1, 3, 0.6), 0.25, {2, {}}},
        {"too large", block(0, 4, 7, 0), 0, {5, {}}},
        {"too small", block(0, 4, 0.5, 0), 1, {1, {}}},
        {"no number", block(0, 4, infinity, 0), 1, {1, {}}},
        {"no ramp jumps", block(0, 4, 2, -3), 0, {2, {}}},
        {"ramp not finite jumps", block(0, 4, 2, notANumber), 3.99, {2, {}}},
        {"focus is cleaned", block(0, 4, 2, 0, {-1, notANumber}), 1, {2, {0, 0.5}}},
        {"no time", block(0, 4, 2, 0), notANumber, {}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(zoomState({row.block}, row.time), row.expected) << row.name;
    EXPECT_EQ(zoomState({}, 1), ZoomState{});
    // The earlier of two blocks holds until its end.
    const QList<ZoomBlock> overlapping{block(0, 2, 2, 0), block(1, 2, 4, 0)};
    EXPECT_EQ(zoomState(overlapping, 1.5).scale, 2);
    EXPECT_EQ(zoomState(overlapping, 2).scale, 4);
}

TEST(Zoom, RampsInAStretch) {
    struct Row {
        ZoomBlock block;
        double start;
        double end;
        bool expected;
    };
    const Row rows[] = {
        {block(2, 4, 2, 1), 0, 1.9, false},        {block(2, 4, 2, 1), 0, 2, true},
        {block(2, 4, 2, 1), 3, 5, true},           {block(2, 4, 2, 1), 3.1, 4.9, false},
        {block(2, 4, 2, 1), 6, 7, true},           {block(2, 4, 2, 1), 6.1, 7, false},
        {block(2, 4, 2, 9), 4, 4, true},           {block(2, 4, 2, 0), 1, 3, true},
        {block(2, 4, 2, 0), 3, 4, false},          {block(2, 4, 1, 1), 0, 9, false},
        {block(2, 4, notANumber, 1), 0, 9, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(zoomRampActive({row.block}, row.start, row.end), row.expected)
            << row.start << " to " << row.end << ", ramp " << row.block.rampDuration;
}

TEST(Zoom, TransformKeepsItsFocusInPlace) {
    const QRectF rect(100, 50, 200, 100);
    EXPECT_TRUE(zoomTransform(1.00005, {}, rect).isIdentity());
    EXPECT_TRUE(zoomTransform(notANumber, {}, rect).isIdentity());
    EXPECT_TRUE(zoomTransform(2, {}, QRectF(0, 0, 0, 10)).isIdentity());
    EXPECT_EQ(zoomTransform(2, {1, 0}, rect).map(rect.topRight()), rect.topRight());
    EXPECT_EQ(zoomTransform(2, {1, 0}, rect).mapRect(rect), QRectF(-100, 50, 400, 200));
    EXPECT_EQ(zoomTransform(3, {}, rect).mapRect(rect), QRectF(-100, -50, 600, 300));
    EXPECT_EQ(zoomTransform(2, {notANumber, 9}, rect).map(QPointF(200, 150)), QPointF(200, 150));
}

} // namespace
} // namespace keldra
