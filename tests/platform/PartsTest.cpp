// The parts of the X11 adapters that need no display.

#include "imaging/FrameFit.h"
#include "platform/x11/CapturePacer.h"
#include "platform/x11/CursorImage.h"
#include "platform/x11/DesktopSpace.h"
#include "platform/x11/PaintPlan.h"
#include "scene/SceneReader.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace keldra {
namespace {

using namespace std::chrono_literals;

TEST(DesktopSpace, turnsYRoundAtThePrimaryMonitor) {
    struct Case {
        const char* name;
        double scaleFactor;
        PixelRect primary;
        PixelRect pixels;
        QRectF points;
    };
    const Case cases[] = {
        {"top left corner", 1, {0, 0, 1920, 1080}, {0, 0, 100, 50}, {0, 1030, 100, 50}},
        {"whole primary, scaled", 1.5, {0, 0, 1920, 1080}, {0, 0, 1920, 1080}, {0, 0, 1280, 720}},
        {"right of the primary", 1, {0, 0, 960, 1080}, {960, 100, 100, 80}, {960, 900, 100, 80}},
        {"left of the primary", 2, {960, 0, 960, 1080}, {0, 980, 100, 100}, {-480, 0, 50, 50}},
        {"above the primary", 1, {0, 540, 1920, 540}, {0, 0, 1920, 540}, {0, 540, 1920, 540}},
        {"below the primary", 1, {0, 0, 1920, 540}, {10, 600, 20, 30}, {10, -90, 20, 30}},
    };
    for (const Case& each : cases) {
        const DesktopSpace space{each.scaleFactor, each.primary};
        EXPECT_EQ(space.toPoints(each.pixels), each.points) << each.name;
        EXPECT_EQ(space.toPixels(each.points), each.pixels) << each.name;
    }
}

TEST(FrameFit, cropsRoundingAndScalesTheRest) {
    struct Case {
        const char* name;
        int width, height, frameWidth, frameHeight;
        FrameFit fit;
    };
    const Case cases[] = {
        {"equal", 640, 400, 640, 400, {{0, 0, 640, 400}, true}},
        {"rounded down to even", 641, 401, 640, 400, {{0, 0, 640, 400}, true}},
        {"half", 1280, 800, 640, 400, {{0, 0, 640, 400}, false}},
        {"wider", 1280, 400, 640, 400, {{0, 100, 640, 200}, false}},
        {"taller", 320, 400, 640, 400, {{160, 0, 320, 400}, false}},
        {"smaller is enlarged", 320, 200, 640, 400, {{0, 0, 640, 400}, false}},
        {"a line keeps a pixel", 4000, 1, 640, 400, {{0, 199, 640, 1}, false}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(fitInto(each.width, each.height, each.frameWidth, each.frameHeight), each.fit) << each.name;
}

TEST(PaintPlan, paintsNoPixelUnderAnOpaqueOne) {
    const QRect area(0, 0, 100, 100);
    const PaintPlan plan = planPainting(area, {{QRect(-10, -10, 60, 60), true},
                                               {QRect(20, 20, 10, 10), false},
                                               {QRect(30, 30, 40, 40), true},
                                               {QRect(35, 35, 10, 10), true},
                                               {QRect(40, 40, 30, 30), false},
                                               {QRect(35, 35, 10, 10), true}});
    EXPECT_EQ(plan.items[0], QRegion(0, 0, 50, 50) - QRect(30, 30, 40, 40));
    EXPECT_EQ(plan.items[1], QRegion(20, 20, 10, 10)) << "lets the one below shine through";
    EXPECT_EQ(plan.items[2], QRegion(30, 30, 40, 40) - QRect(35, 35, 10, 10));
    EXPECT_TRUE(plan.items[3].isEmpty()) << "covered by its twin";
    EXPECT_EQ(plan.items[4], QRegion(40, 40, 30, 30) - QRect(35, 35, 10, 10));
    EXPECT_EQ(plan.items[5], QRegion(35, 35, 10, 10));
    EXPECT_EQ(plan.background, QRegion(area) - QRect(0, 0, 50, 50) - QRect(30, 30, 40, 40));
}

TEST(CursorImage, blendsOverThePictureAndStaysInside) {
    constexpr int size = 8;
    const CursorImage cursor{3, 1, 1, 0, {0xff102030, 0x80400000, 0x00000000}};
    struct Case {
        const char* name;
        int x;
        std::vector<std::uint32_t> row;
    };
    constexpr std::uint32_t grey = 0x808080;
    const Case cases[] = {
        {"inside", 3, {grey, grey, 0x102030, 0x804040, grey, grey, grey, grey}},
        {"over the left edge", 0, {0x804040, grey, grey, grey, grey, grey, grey, grey}},
        {"over the right edge", 8, {grey, grey, grey, grey, grey, grey, grey, 0x102030}},
        {"beyond", 40, {grey, grey, grey, grey, grey, grey, grey, grey}},
    };
    for (const Case& each : cases) {
        PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, size, size);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < 4 * size; ++x)
                picture.mutableRow(0, y)[x] = x % 4 == 3 ? 255 : 0x80;
        drawCursor(picture, cursor, each.x, 5);
        std::vector<std::uint32_t> row;
        for (int x = 0; x < size; ++x) {
            row.push_back(scene::colourAt(picture, x, 5));
            EXPECT_EQ(picture.row(0, 5)[4 * x + 3], 255) << each.name;
            EXPECT_EQ(scene::colourAt(picture, x, 4), grey) << each.name;
        }
        EXPECT_EQ(row, each.row) << each.name;
    }
}

TEST(SceneLayout, isReadAsItIsPainted) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, scene::minimumWidth, scene::minimumHeight);
    for (const std::uint32_t number : {0u, 1u, 0x5a5a5au, 0xffffffu, 0x800000u}) {
        for (int i = 0; i <= scene::frameNumber.bits; ++i) {
            const scene::Area place = scene::block(scene::frameNumber, i);
            for (int y = place.y; y < place.y + place.height; ++y)
                std::fill_n(picture.mutableRow(0, y) + 4 * place.x, 4 * place.width,
                            scene::isWhite(scene::frameNumber, number, i) ? 255 : 0);
        }
        EXPECT_EQ(scene::readNumber(picture, scene::frameNumber), number);
        const scene::Area flipped = scene::block(scene::frameNumber, 3);
        std::uint8_t* pixel = picture.mutableRow(0, flipped.y + 8) + 4 * (flipped.x + 8);
        pixel[1] = std::uint8_t(~pixel[1]);
        EXPECT_EQ(scene::readNumber(picture, scene::frameNumber), std::nullopt) << "one wrong block is noticed";
    }
}

/// A pacer that is asked in time, but late by up to `lateness`; answers when pictures were taken.
class PacerRun {
public:
    explicit PacerRun(Duration interval) : m_pacer(interval) {}

    void changeAt(Duration when) {
        captureUntil(when);
        m_pacer.changed(origin + when);
    }
    void captureUntil(Duration when) {
        if (!m_pacer.isPending())
            return;
        const Duration at = *m_pacer.due() - origin + lateness;
        if (at > when)
            return;
        m_pacer.taken(origin + at);
        m_taken.push_back(at);
    }
    const std::vector<Duration>& taken() const { return m_taken; }

    Duration lateness{};

private:
    static constexpr CapturePacer::TimePoint origin{1000s};
    CapturePacer m_pacer;
    std::vector<Duration> m_taken;
};

TEST(CapturePacer, takesAtOnceOrAtTheNextDueTime) {
    struct Case {
        const char* name;
        std::vector<Duration> changes;
        std::vector<Duration> taken;
    };
    const Case cases[] = {
        {"the first at once", {0ms}, {0ms}},
        {"after a whole interval at once", {0ms, 25ms}, {0ms, 25ms}},
        {"earlier when it is nearly over", {0ms, 3ms}, {0ms, 15ms}},
        {"many changes make one", {0ms, 3ms, 4ms, 9ms}, {0ms, 15ms}},
        {"nothing more once still", {0ms, 3ms, 40ms}, {0ms, 15ms, 40ms}},
        {"closer and closer to a source of its own rate",
         {0ms, 12ms, 28ms, 44ms, 60ms, 76ms},
         {0ms, 15ms, 30ms, 45ms, 60ms, 76ms}},
    };
    for (const Case& each : cases) {
        PacerRun run(16ms);
        for (const Duration change : each.changes)
            run.changeAt(change);
        run.captureUntil(1s);
        EXPECT_EQ(run.taken(), each.taken) << each.name;
    }
}

TEST(CapturePacer, keepsToItsRateThoughItIsLate) {
    PacerRun run(16ms);
    run.lateness = 1ms;
    for (int i = 0; i < 1600; ++i)
        run.changeAt(i * 1ms);
    EXPECT_EQ(run.taken().size(), 101u) << "100, and one from the time before the first";
    for (std::size_t i = 0; i + 10 < run.taken().size(); ++i)
        EXPECT_GE(run.taken()[i + 10] - run.taken()[i], 150ms);
}

TEST(CapturePacer, aStallIsNotMadeUpFor) {
    CapturePacer pacer(10ms);
    const CapturePacer::TimePoint start{1000s};
    pacer.changed(start);
    pacer.taken(start + 55ms);
    pacer.changed(start + 56ms);
    EXPECT_EQ(pacer.due(), start + 60ms - 10ms / 16.0);
}

TEST(CapturePacer, seesEveryPictureThatStandsForAnInterval) {
    constexpr Duration interval = 16'666'667ns;
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> extra(0, 9'000'000);
        PacerRun run(interval);
        run.lateness = 1ms;
        Duration now{};
        std::vector<Duration> changes;
        for (int i = 0; i < 500; ++i) {
            changes.push_back(now);
            run.changeAt(now);
            now += interval + 2ms + Duration(extra(random));
        }
        run.captureUntil(now);
        ASSERT_EQ(run.taken().size(), changes.size()) << "seed " << seed;
        for (std::size_t i = 0; i < changes.size(); ++i)
            EXPECT_TRUE(run.taken()[i] >= changes[i] && (i + 1 == changes.size() || run.taken()[i] < changes[i + 1]))
                << "seed " << seed << " picture " << i;
    }
}

} // namespace
} // namespace keldra
