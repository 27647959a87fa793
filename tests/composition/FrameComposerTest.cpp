#include "composition/FrameComposer.h"

#include "composition/CanvasBackgroundRenderer.h"
#include "imaging/Pictures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace keldra {
namespace {

using test::flat;
using test::paint;
using test::Pixel;
using test::pixelAt;

constexpr Pixel red{0, 0, 255, 255};
constexpr Pixel green{0, 255, 0, 255};
constexpr Pixel white{255, 255, 255, 255};
constexpr Pixel backdrop{200, 200, 200, 255};
constexpr RGBAColor backdropColor{200 / 255.0, 200 / 255.0, 200 / 255.0, 1};

QTransform place(double x, double y, double scale = 1) {
    return QTransform::fromScale(scale, scale) * QTransform::fromTranslate(x, y);
}

/// An instruction without a shadow over grey.
EditorCompositorInstruction over(QList<EditorCompositorInstruction::Layer> layers) {
    EditorCompositorInstruction instruction;
    instruction.background = backdropColor;
    instruction.shadow.isEnabled = false;
    instruction.layers = std::move(layers);
    return instruction;
}

using Sources = std::map<int, PixelBuffer>;

PixelBuffer composed(FrameComposer& composer, const EditorCompositorInstruction& instruction, const Sources& sources,
                     const QSize& canvas, double seconds = 0) {
    PixelBuffer target = flat(canvas.width(), canvas.height(), {9, 9, 9, 9});
    composer.compose(
        instruction, seconds,
        [&](std::int32_t trackID) {
            const auto found = sources.find(trackID);
            return found == sources.end() ? PixelBuffer() : found->second;
        },
        target);
    return target;
}

PixelBuffer composed(const EditorCompositorInstruction& instruction, const Sources& sources, const QSize& canvas,
                     double seconds = 0) {
    FrameComposer composer;
    return composed(composer, instruction, sources, canvas, seconds);
}

/// One letter per pixel: r, g, w(hite), b(ackdrop), else ".".
std::string picture(const PixelBuffer& frame) {
    std::string text;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const Pixel pixel = pixelAt(frame, x, y);
            text += pixel == red ? 'r' : pixel == green ? 'g' : pixel == white ? 'w' : pixel == backdrop ? 'b' : '.';
        }
        text += '\n';
    }
    return text;
}

TEST(FrameComposer, DrawsLayersOverTheBackground) {
    const Sources sources{{1, flat(3, 2, red)}, {2, flat(2, 2, green)}};
    struct Row {
        const char* name;
        QList<EditorCompositorInstruction::Layer> layers;
        const char* expected;
    };
    const Row rows[] = {
        {"no layer", {}, "bbbbb\nbbbbb\nbbbbb\n"},
        {"the first ends on top", {{2, place(0, 0), 1}, {1, place(1, 1), 1}}, "ggbbb\nggrrb\nbrrrb\n"},
        {"the other way round", {{1, place(1, 1), 1}, {2, place(0, 0), 1}}, "ggbbb\ngrrrb\nbrrrb\n"},
        {"no opacity", {{2, place(0, 0), 0}, {1, place(1, 1), 1}}, "bbbbb\nbrrrb\nbrrrb\n"},
        {"no frame", {{7, place(0, 0), 1}, {1, place(1, 1), 1}}, "bbbbb\nbrrrb\nbrrrb\n"},
        {"cut by the canvas", {{1, place(-1, 2), 1}, {2, place(4, -1), 1}}, "bbbbg\nbbbbb\nrrbbb\n"},
        {"twice as large", {{2, place(1, 0, 2), 1}}, "bgggg\nbgggg\nbgggg\n"},
        {"turned", {{1, QTransform(0, 1, -1, 0, 2, 0), 1}}, "rrbbb\nrrbbb\nrrbbb\n"},
        {"outside the canvas", {{1, place(9, 9), 1}}, "bbbbb\nbbbbb\nbbbbb\n"},
        {"without extent", {{1, QTransform::fromScale(0, 1), 1}}, "bbbbb\nbbbbb\nbbbbb\n"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(picture(composed(over(row.layers), sources, {5, 3})), row.expected) << row.name;
}

TEST(FrameComposer, MixesByOpacityAlphaAndCoverage) {
    const Sources sources{{1, flat(2, 2, white)}, {2, flat(2, 2, {0, 0, 100, 128})}};
    const auto at = [&](const EditorCompositorInstruction::Layer& layer, int x, int y) {
        return pixelAt(composed(over({layer}), sources, {6, 6}), x, y);
    };
    EXPECT_EQ(at({1, place(1, 1), 0.5f}, 1, 1), (Pixel{228, 228, 228, 255}));
    EXPECT_EQ(at({2, place(1, 1), 1}, 1, 1), (Pixel{100, 100, 200, 255})) << "transparent pictures show the background";
    EXPECT_EQ(at({1, place(1.5, 1), 1}, 1, 1), (Pixel{228, 228, 228, 255})) << "half covered";
    EXPECT_EQ(at({1, place(1.5, 1), 1}, 2, 1), white);
    EXPECT_EQ(at({1, place(1.5, 1), 1}, 3, 1), (Pixel{228, 228, 228, 255}));
    EXPECT_EQ(at({1, place(1, 0.9), 1}, 1, 0), (Pixel{205, 205, 205, 255})) << "a tenth covered";
}

PixelBuffer quarters(int side) {
    // Red, green over white, backdrop.
    return paint(side, side, [side](int x, int y) {
        const bool isRight = x >= side / 2;
        return y < side / 2 ? (isRight ? green : red) : (isRight ? backdrop : white);
    });
}

TEST(FrameComposer, ZoomStaysInsideThePicturesRectangle) {
    EditorCompositorInstruction instruction = over({{1, place(2, 2), 1}});
    const Sources sources{{1, quarters(4)}};
    const auto zoomed = [&](double scale, ZoomFocus focus) {
        instruction.zoomBlocks = {ZoomBlock{QUuid(), 0, 1, scale, focus, 0}};
        return composed(instruction, sources, {8, 8}, 0.5);
    };
    const std::string unzoomed = picture(composed(over({{1, place(2, 2), 1}}), sources, {8, 8}));
    EXPECT_EQ(picture(zoomed(1, {})), unzoomed);
    EXPECT_EQ(picture(zoomed(1.00005, {0, 0})), unzoomed);
    // The focus counts from the top left: each corner of the picture stays where it is.
    const std::pair<ZoomFocus, Pixel> corners[] = {{{0, 0}, red}, {{1, 0}, green}, {{0, 1}, white}};
    for (const auto& [focus, color] : corners) {
        const PixelBuffer frame = zoomed(5, focus);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const bool isInside = x >= 2 && x < 6 && y >= 2 && y < 6;
                ASSERT_EQ(pixelAt(frame, x, y), isInside ? color : backdrop) << focus.x << ", " << focus.y;
            }
    }
    // Outside its block there is no zoom.
    EXPECT_EQ(picture(composed(instruction, sources, {8, 8}, 1)), unzoomed);
    // A scale just above the threshold moves pixels that are far from the focus.
    EditorCompositorInstruction wide = over({{1, QTransform(), 1}});
    const Sources lines{{1, paint(2000, 1, [](int x, int) { return x % 2 ? white : Pixel{0, 0, 0, 255}; })}};
    wide.zoomBlocks = {ZoomBlock{QUuid(), 0, 1, 1.0002, {0, 0}, 0}};
    EXPECT_NE(pixelAt(composed(wide, lines, {2000, 1}), 1990, 0), pixelAt(lines.at(1), 1990, 0));
    wide.zoomBlocks.first().scale = 1.00005;
    EXPECT_EQ(pixelAt(composed(wide, lines, {2000, 1}), 1990, 0), pixelAt(lines.at(1), 1990, 0));
}

/// Where the picture turns from black to white, told by how much light row `y` has up to `right`.
double edgeIn(const PixelBuffer& frame, int y, double right) {
    double light = 0;
    for (int x = 0; x < int(std::ceil(right)); ++x)
        light += pixelAt(frame, x, y)[0] / 255.0;
    return right - light;
}

TEST(FrameComposer, EdgesLieWithinATenthOfAPixelInRampsToo) {
    // Half black, half white, with a soft edge that no sampling misses; the columns do not divide by the factors of a
    // strong reduction. The layer's own edges are sharp.
    constexpr int width = 250;
    const auto edge = [](int x, int) {
        const int light = int(std::lround(255 * std::clamp((x + 0.5 - width / 2.0) / 20 + 0.5, 0.0, 1.0)));
        return Pixel{light, light, light, 255};
    };
    const Sources sources{{1, paint(width, 40, edge)}};
    for (const double scale : {0.21, 0.37, 0.8, 1.0, 1.3})
        for (const double left : {0.0, 10.3}) {
            EditorCompositorInstruction instruction = over({{1, place(left, 0, scale), 1}});
            instruction.background = RGBAColor{0, 0, 0, 1};
            instruction.zoomBlocks = {ZoomBlock{QUuid(), 0, 2, 1.6, {0.2, 0.5}, 1}};
            FrameComposer composer;
            for (int frame = 0; frame <= 60; ++frame) {
                const double seconds = frame / 60.0;
                const double progress = seconds * seconds * (3 - 2 * seconds);
                const double focus = left + 0.2 * width * scale;
                const double expected = focus + 0.3 * width * scale * (1 + 0.6 * progress);
                const PixelBuffer canvas = composed(composer, instruction, sources, {400, 8}, seconds);
                ASSERT_NEAR(edgeIn(canvas, 1, left + width * scale), expected, 0.1)
                    << "scale " << scale << ", left " << left << ", frame " << frame;
            }
        }
}

TEST(FrameComposer, CornersBelongToTheRectangleAlsoUnderZoom) {
    EditorCompositorInstruction instruction = over({{1, place(10, 10), 1}});
    instruction.cornerRadiusFraction = 0.5;
    const Sources sources{{1, flat(40, 40, white)}};
    const PixelBuffer circle = composed(instruction, sources, {60, 60});
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 60; ++x) {
            const double distance = std::hypot(x + 0.5 - 30, y + 0.5 - 30);
            if (distance < 19) {
                ASSERT_EQ(pixelAt(circle, x, y), white) << x << ", " << y;
            } else if (distance > 21) {
                ASSERT_EQ(pixelAt(circle, x, y), backdrop) << x << ", " << y;
            }
        }
    instruction.zoomBlocks = {ZoomBlock{QUuid(), 0, 1, 3, {}, 0}};
    const PixelBuffer zoomed = composed(instruction, sources, {60, 60});
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 60; ++x)
            ASSERT_EQ(pixelAt(zoomed, x, y), pixelAt(circle, x, y));
}

double darkness(const PixelBuffer& frame, int x, int y) {
    return 200 - pixelAt(frame, x, y)[0];
}

TEST(FrameComposer, ShadowsFallDownwardsAndFadeWithTheirClip) {
    EditorCompositorInstruction instruction = over({{1, place(60, 60), 1}});
    instruction.shadow = CanvasShadow{true, {0, 0, 0, 1}, 0.5, 0.02, 0.05};
    const Sources sources{{1, flat(80, 80, white)}};
    const QSize canvas(200, 200);
    const PixelBuffer full = composed(instruction, sources, canvas);
    EXPECT_EQ(pixelAt(full, 60, 60), white) << "a clip covers its own shadow";
    EXPECT_EQ(darkness(full, 100, 55), 0);
    // Ten pixels down, sigma four: the shadow's lower edge lies at 150.
    EXPECT_NEAR(darkness(full, 100, 141), 100, 2);
    EXPECT_NEAR(darkness(full, 100, 149) + darkness(full, 100, 150), 100, 2);
    EXPECT_NEAR(darkness(full, 56, 100), 100 * 0.5 * std::erfc(3.5 / 4 / std::sqrt(2.0)), 2);

    instruction.layers.first().opacity = 0.5f;
    const PixelBuffer faint = composed(instruction, sources, canvas);
    EXPECT_NEAR(darkness(faint, 100, 141), 50, 2);

    instruction.layers.first().opacity = 1;
    instruction.shadow.blurRadius = 0;
    instruction.shadow.color = {1, 0, 0, 0.5};
    const PixelBuffer sharp = composed(instruction, sources, canvas);
    EXPECT_EQ(pixelAt(sharp, 100, 149), (Pixel{150, 150, 214, 255}));
    EXPECT_EQ(pixelAt(sharp, 100, 150), backdrop);
    // With round corners the shadow is round too.
    instruction.cornerRadiusFraction = 0.5;
    const PixelBuffer round = composed(instruction, sources, canvas);
    EXPECT_EQ(pixelAt(round, 62, 148), backdrop);
    EXPECT_EQ(pixelAt(round, 100, 145), (Pixel{150, 150, 214, 255}));
}

TEST(FrameComposer, ADeepStackIsDrawnWithFewPicturesAtATime) {
    // Each layer leaves one column of the one below it to be seen; all shadows fall below the pictures.
    constexpr int depth = 30;
    EditorCompositorInstruction instruction = over({});
    for (int number = depth - 1; number >= 0; --number)
        instruction.layers.append({number, place(number, 0), 1});
    instruction.shadow = CanvasShadow{true, {0, 0, 0, 1}, 0.5, 0, 0.5};
    int alive = 0;
    int mostAlive = 0;
    const auto source = [&](std::int32_t number) {
        const auto pixels = std::make_shared<PixelBuffer>(flat(depth, 4, {number * 8, 0, 0, 255}));
        mostAlive = std::max(mostAlive, ++alive);
        const std::shared_ptr<const void> owner(pixels.get(), [pixels, &alive](const void*) { --alive; });
        PixelBuffer::Planes planes;
        planes[0] = {pixels->mutableRow(0, 0), pixels->strideBytes()};
        return PixelBuffer::wrap(PixelFormat::bgra, depth, 4, planes, owner);
    };
    PixelBuffer canvas = flat(depth, 8, backdrop);
    FrameComposer composer;
    composer.compose(instruction, 0, source, canvas);
    for (int x = 0; x < depth; ++x) {
        ASSERT_EQ(pixelAt(canvas, x, 2), (Pixel{x * 8, 0, 0, 255}));
        ASSERT_NEAR(pixelAt(canvas, x, 6)[0], 200 * std::pow(0.5, x + 1), 1);
    }
    EXPECT_EQ(alive, 0);
    EXPECT_LE(mostAlive, 8);
}

/// Whatever was drawn before, a frame is what a fresh composer draws.
TEST(FrameComposer, WhatIsKeptBetweenFramesNeverShows) {
    const unsigned seed = 4;
    std::mt19937 random(seed);
    const auto pick = [&](std::initializer_list<double> values) { return values.begin()[random() % values.size()]; };
    const Sources all{{1, test::noise(32, 18, 1)}, {2, test::noise(18, 32, 2)}, {3, test::noise(40, 40, 3)}};
    const CanvasBackground backgrounds[] = {backdropColor, gradientPresets()[3].gradient,
                                            gradientPresets()[16].gradient};
    FrameComposer composer;
    for (int round = 0; round < 150; ++round) {
        EditorCompositorInstruction instruction;
        instruction.background = backgrounds[random() % 3];
        instruction.shadow = {random() % 4 != 0, {0, 0, pick({0, 1}), 1}, 0.5, pick({0, 0.02, 0.1}), pick({0, 0.05})};
        instruction.cornerRadiusFraction = pick({0, 0.1, 0.5});
        for (unsigned count = random() % 4; count > 0; --count)
            instruction.layers.append({int(1 + random() % 3),
                                       place(pick({0, 4, 7.3}), pick({-3, 2.6}), pick({0.3, 0.8, 1.5})),
                                       float(pick({0.4, 1, 1}))});
        if (random() % 3 == 0)
            instruction.zoomBlocks = {ZoomBlock{QUuid(), 0, 2, 3, {0.2, 0.9}, 1}};
        const QSize canvas = random() % 3 ? QSize(48, 30) : QSize(30, 48);
        Sources sources = all;
        if (random() % 4 == 0)
            sources.erase(1);
        const double seconds = pick({0, 0.4, 1.2});
        const PixelBuffer kept = composed(composer, instruction, sources, canvas, seconds);
        const PixelBuffer fresh = composed(instruction, sources, canvas, seconds);
        for (int y = 0; y < canvas.height(); ++y)
            ASSERT_EQ(std::memcmp(kept.row(0, y), fresh.row(0, y), std::size_t(canvas.width()) * 4), 0)
                << "seed " << seed << ", round " << round << ", row " << y;
    }
}

} // namespace
} // namespace keldra
