// The 4:2:0 road gives the reference's frames.

#include "composition/PlanarFrameComposer.h"

#include "composition/CanvasBackgroundRenderer.h"
#include "composition/FrameComposer.h"
#include "imaging/Convert.h"
#include "imaging/Pictures.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace keldra {
namespace {

using test::paint;
using test::Pixel;

/// Something like a screen: coloured panels, dark and light lines of "text", a smooth gradient.
PixelBuffer screenLike(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    struct Panel {
        PixelRect place;
        Pixel colour;
    };
    std::vector<Panel> panels;
    const auto below = [&](int limit) { return int(random() % unsigned(limit)); };
    for (int i = 0; i < 12; ++i)
        panels.push_back({{below(width), below(height), 20 + below(width / 2), 20 + below(height / 2)},
                          {below(256), below(256), below(256), 255}});
    PixelBuffer picture = paint(width, height, [&](int x, int y) {
        Pixel colour{x * 255 / width, y * 255 / height, 128, 255};
        for (const Panel& panel : panels) {
            const PixelRect& place = panel.place;
            if (x < place.x || y < place.y || x >= place.right() || y >= place.bottom())
                continue;
            const bool isText = (y - place.y) % 12 < 6 && ((x * 7 + (y / 2) * 3) % 11) < 4;
            colour =
                isText ? Pixel{255 - panel.colour[0], 255 - panel.colour[1], 255 - panel.colour[2], 255} : panel.colour;
        }
        return colour;
    });
    PixelBuffer planes = PixelBuffer::allocate(PixelFormat::i420, width, height);
    convertBgraToI420(picture, planes);
    return planes;
}

PixelBuffer asBgra(const PixelBuffer& planes) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, planes.width(), planes.height());
    convertI420ToBgra(planes, picture);
    return picture;
}

/// How far apart two planes are.
struct Distance {
    double mean = 0;
    int percentile999 = 0;
};

Distance distance(const PixelBuffer& a, const PixelBuffer& b, int plane) {
    std::array<std::int64_t, 256> counts{};
    std::int64_t total = 0;
    std::int64_t sum = 0;
    for (int y = 0; y < a.planeHeight(plane); ++y)
        for (int x = 0; x < a.planeWidth(plane); ++x) {
            const int apart = std::abs(int(a.row(plane, y)[x]) - int(b.row(plane, y)[x]));
            counts[std::size_t(apart)] += 1;
            total += 1;
            sum += apart;
        }
    Distance result{double(sum) / double(total), 0};
    std::int64_t above = total - counts[0];
    while (above * 1000 > total)
        above -= counts[std::size_t(++result.percentile999)];
    return result;
}

class Roads {
public:
    void compare(const EditorCompositorInstruction& instruction, double seconds,
                 const std::map<int, PixelBuffer>& sources, const QSize& canvas, const std::string& name) {
        PixelBuffer planes = PixelBuffer::allocate(PixelFormat::i420, canvas.width(), canvas.height());
        ASSERT_TRUE(m_planar.compose(
            instruction, seconds, [&](std::int32_t track) { return sources.at(track); }, planes))
            << name;
        PixelBuffer reference = PixelBuffer::allocate(PixelFormat::bgra, canvas.width(), canvas.height());
        m_reference.compose(
            instruction, seconds, [&](std::int32_t track) { return asBgra(sources.at(track)); }, reference);
        PixelBuffer expected = PixelBuffer::allocate(PixelFormat::i420, canvas.width(), canvas.height());
        convertBgraToI420(reference, expected);
        for (int plane = 0; plane < 3; ++plane) {
            const Distance apart = distance(planes, expected, plane);
            EXPECT_LE(apart.percentile999, plane == 0 ? 6 : 12) << name << ", plane " << plane;
            EXPECT_LE(apart.mean, 1.5) << name << ", plane " << plane;
        }
    }

private:
    PlanarFrameComposer m_planar;
    FrameComposer m_reference;
};

QTransform place(double x, double y, double scale) {
    return QTransform::fromScale(scale, scale) * QTransform::fromTranslate(x, y);
}

TEST(PlanarFrameComposer, GivesTheReferencesFrames) {
    std::mt19937 random(3);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    Roads roads;
    const QSize canvas(640, 360);
    const std::pair<int, int> sizes[] = {{640, 360}, {641, 361}, {1280, 720}, {320, 200}, {2000, 1125}};
    for (int round = 0; round < 30; ++round) {
        EditorCompositorInstruction instruction;
        if (round % 3 == 0)
            instruction.background = RGBAColor{between(0, 1), between(0, 1), between(0, 1), 1};
        else
            instruction.background = CanvasGradient{
                CanvasGradient::Kind::linear, {between(0, 1), 0.4, 0.5, 1}, {0.1, between(0, 1), 0.9, 1}, 30, 0};
        instruction.shadow.isEnabled = round % 4 != 0;
        instruction.cornerRadiusFraction = round % 2 ? between(0, 0.3) : 0;
        if (round % 5 > 1)
            instruction.zoomBlocks = {ZoomBlock{QUuid::createUuid(), 0, 10, between(1, 3), {}, 0.5}};
        const auto [width, height] = sizes[round % 5];
        std::map<int, PixelBuffer> sources{{1, screenLike(width, height, unsigned(round))}};
        const double scale = 640.0 / width * between(0.6, 1);
        instruction.layers = {{1, place(between(0, 60), between(0, 40), scale), 1}};
        if (round % 3 == 1) {
            sources.emplace(2, screenLike(300, 170, unsigned(100 + round)));
            instruction.layers.prepend({2, place(between(-50, 400), between(-50, 250), between(0.5, 1.5)),
                                        round % 2 ? 1 : float(between(0.1, 1))});
        }
        roads.compare(instruction, between(0, 10), sources, canvas, "round " + std::to_string(round));
    }
}

TEST(PlanarFrameComposer, LeavesWhatItCannotDoToTheReference) {
    PlanarFrameComposer composer;
    PixelBuffer target = PixelBuffer::allocate(PixelFormat::i420, 64, 36);
    EditorCompositorInstruction instruction;
    const PixelBuffer planes = screenLike(64, 36, 1);
    const auto canDraw = [&](const QTransform& transform, const PixelBuffer& source) {
        instruction.layers = {{1, transform, 1}};
        return composer.compose(
            instruction, 0, [&](std::int32_t) { return source; }, target);
    };
    EXPECT_TRUE(canDraw({}, planes));
    EXPECT_FALSE(canDraw({}, asBgra(planes)));
    EXPECT_FALSE(canDraw({0, 1, -1, 0, 36, 0}, planes));
    EXPECT_FALSE(canDraw(QTransform().rotate(10), planes));
    EXPECT_TRUE(canDraw(place(500, 500, 1), planes)) << "beyond the canvas";
    instruction.layers.clear();
    EXPECT_TRUE(composer.compose(
        instruction, 0, [](std::int32_t) { return PixelBuffer(); }, target));
}

} // namespace
} // namespace keldra
