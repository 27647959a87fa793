#include "platform/Desk.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using scene::colourAt;
using scene::readNumber;

TEST(X11ScreenStream, showsACoveredWindowWholeWhereverItIs) {
    Desk desk;
    const SceneProcess scene(sceneAt(100, 100, {"--rate", "30"}));
    const SceneProcess cover(sceneAt(120, 80, {"--still", "--colors", "00ffff,00ffff,00ffff,00ffff"}, 700, 450));
    const auto stream = desk.run({WindowSource{scene.window()}, 640, 400, sixtieth, false});
    const auto shows = [](const ScreenFrame& frame) { return bool(showsScene(frame.pixels, 0, 0)); };
    EXPECT_TRUE(stream->waitFor(shows));
    desk.hands.moveWindow(scene.window(), 1700, -250);
    const std::size_t before = stream->count();
    EXPECT_TRUE(stream->waitForCount(before + 3));
    EXPECT_TRUE(shows(stream->last())) << "mostly beyond the screen's corner";
    EXPECT_EQ(desk.platform.windows->liveFrame(scene.window()), QRectF(1700, 930, 640, 400));
    const std::uint32_t number = *readNumber(stream->last().pixels, scene::frameNumber);
    EXPECT_TRUE(stream->waitFor([&](const ScreenFrame& frame) {
        return readNumber(frame.pixels, scene::frameNumber) > number + 5;
    })) << "and goes on changing";
}

TEST(X11ScreenStream, showsAMovedWindowWhereItIs) {
    Desk desk;
    const SceneProcess scene(sceneAt(100, 100, {"--managed", "--still"}));
    const Screen screen = desk.platform.screens->screens().front();
    const auto stream = desk.run(desk.display(screen));
    const std::vector<int> border = desk.hands.decoration(scene.window());
    desk.hands.moveWindow(scene.window(), 900, 500);
    const auto isMoved = [&](const ScreenFrame& frame) {
        const PixelRect client = desk.hands.clientRect(scene.window());
        return client.x >= 900 && showsScene(frame.pixels, client.x, client.y);
    };
    EXPECT_TRUE(stream->waitFor(isMoved));
    const PixelRect place = desk.inScreen(*desk.platform.windows->liveFrame(scene.window()), screen);
    EXPECT_TRUE(showsScene(stream->last().pixels, place.x + border[0], place.y + border[2]));
}

TEST(X11ScreenStream, drawsTheCursorWhereItPoints) {
    Desk desk;
    const X11Connection& x = desk.hands.x();
    const xcb_font_t font = x.newID();
    const xcb_cursor_t cursor = x.newID();
    xcb_open_font(x.raw(), font, 6, "cursor");
    // The arrow, black with a white edge.
    xcb_create_glyph_cursor(x.raw(), cursor, font, font, 68, 69, 0, 0, 0, 0xffff, 0xffff, 0xffff);
    xcb_change_window_attributes(x.raw(), x.root(), XCB_CW_CURSOR, &cursor);
    const SceneProcess scene(sceneAt(200, 200, {"--still", "--colors", "00ff00,00ff00"}));
    const Screen screen = desk.platform.screens->screens().front();
    const auto hasCursorAt = [](const PixelBuffer& picture, int left, int top) {
        int changed = 0;
        for (int dy = 0; dy < 8; ++dy)
            for (int dx = 0; dx < 8; ++dx)
                changed += colourAt(picture, left + dx, top + dy) != 0x00ff00;
        return changed > 8;
    };
    desk.hands.warpPointer(5, 5);
    const auto display = desk.run(desk.display(screen, sixtieth, true));
    const auto window = desk.run({WindowSource{scene.window()}, 640, 400, sixtieth, true});
    const auto without = desk.run(desk.display(screen, sixtieth, false));
    ASSERT_TRUE(display->waitForCount(1) && window->waitForCount(1) && without->waitForCount(1));
    EXPECT_FALSE(hasCursorAt(window->last().pixels, 40, 100));

    desk.hands.warpPointer(240, 300);
    EXPECT_TRUE(display->waitFor([&](const ScreenFrame& frame) { return hasCursorAt(frame.pixels, 240, 300); }));
    EXPECT_TRUE(window->waitFor([&](const ScreenFrame& frame) { return hasCursorAt(frame.pixels, 40, 100); }));
    desk.hands.warpPointer(5, 5);
    EXPECT_TRUE(display->waitFor([&](const ScreenFrame& frame) { return !hasCursorAt(frame.pixels, 240, 300); }));
    EXPECT_TRUE(window->waitFor([&](const ScreenFrame& frame) { return !hasCursorAt(frame.pixels, 40, 100); }))
        << "it left the window";
    EXPECT_TRUE(isOpaque(display->last().pixels));
    EXPECT_TRUE(desk.hands.isComposited() || without->count() == 1) << "the pointer is no news to who does not show it";
}

TEST(X11ScreenStream, keepsToItsRateAndItsClock) {
    Desk desk;
    const SceneProcess scene(sceneAt(0, 0, {"--rate", "120"}));
    constexpr Duration interval = 50ms;
    std::atomic<int> late = 0;
    const auto configuration = desk.display(desk.platform.screens->screens().front(), interval);
    const MediaTime start = desk.platform.clock->now();
    const auto stream = desk.run(configuration, [&](const ScreenFrame& frame) {
        const auto painted = readNumber(frame.pixels, scene::clockMilliseconds);
        const auto stamp = std::uint32_t(frame.time.value() / 1000);
        if (painted)
            late += std::int32_t(stamp - *painted) < 0 || std::int32_t(stamp - *painted) > 5000;
    });
    ASSERT_TRUE(stream->waitForCount(20));
    const std::vector<MediaTime> times = stream->times();
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_EQ(times.front().timescale(), HostClock::timescale);
    // One picture may come early, for the time before the first.
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_GE((times[i] - start).seconds(), (double(i) - 1) * 0.050) << i;
    EXPECT_EQ(late, 0) << "a frame shows what was painted before its stamp";
}

TEST(X11ScreenStream, fitsAResizedWindowIntoItsFirstSize) {
    Desk desk;
    const SceneProcess scene(sceneAt(100, 100, {"--rate", "20"}));
    const auto stream = desk.run({WindowSource{scene.window()}, 640, 400, sixtieth, true});
    ASSERT_TRUE(stream->waitForCount(1));
    desk.hands.resizeWindow(scene.window(), 1280, 400);
    const auto isFitted = [](const ScreenFrame& frame) {
        const PixelBuffer& picture = frame.pixels;
        const scene::Area white = scene::patches[1].area;
        const scene::Area blue = scene::patches[4].area;
        return picture.width() == 640 && picture.height() == 400 && colourAt(picture, 320, 50) == 0 &&
               colourAt(picture, 320, 350) == 0 &&
               colourAt(picture, (white.x + 32) / 2, 100 + (white.y + 32) / 2) == 0xffffff &&
               colourAt(picture, (blue.x + 32) / 2, 100 + (blue.y + 32) / 2) == 0x0000ff;
    };
    EXPECT_TRUE(stream->waitFor(isFitted));
    EXPECT_TRUE(isOpaque(stream->last().pixels));
    desk.hands.resizeWindow(scene.window(), 640, 400);
    EXPECT_TRUE(stream->waitFor([](const ScreenFrame& frame) { return bool(showsScene(frame.pixels, 0, 0)); }));
}

TEST(X11ScreenStream, keepsTheLastFrameOfAHiddenWindow) {
    Desk desk;
    const SceneProcess scene(sceneAt(100, 100, {"--rate", "30"}));
    const auto stream = desk.run({WindowSource{scene.window()}, 640, 400, sixtieth, true});
    ASSERT_TRUE(stream->waitForCount(3));
    desk.hands.unmapWindow(scene.window());
    // Had it gone on, another stream's frames would tell the time.
    const SceneProcess clock(sceneAt(800, 100, {"--rate", "30"}));
    const auto other = desk.run({WindowSource{clock.window()}, 640, 400, sixtieth, false});
    const std::size_t hidden = stream->count();
    ASSERT_TRUE(other->waitForCount(15));
    EXPECT_LE(stream->count(), hidden + 1);
    EXPECT_TRUE(showsScene(stream->last().pixels, 0, 0));
    desk.hands.mapWindow(scene.window());
    EXPECT_TRUE(stream->waitForCount(stream->count() + 5));
    EXPECT_TRUE(stream->waitFor([](const ScreenFrame& frame) { return bool(showsScene(frame.pixels, 0, 0)); }));
    EXPECT_TRUE(stream->stops().empty());
}

TEST(X11ScreenStream, tellsOnceWhenItsSourceIsGone) {
    Desk desk;
    desk.hands.setMonitors({{"L", {0, 0, 960, 1080}}, {"R", {960, 0, 960, 1080}}});
    auto scene = std::make_unique<SceneProcess>(sceneAt(100, 100, {"--managed", "--rate", "30"}));
    const auto window = desk.run({WindowSource{scene->window()}, 640, 400, sixtieth, true});
    const auto display = desk.run(desk.display(desk.platform.screens->screens()[1]));
    ASSERT_TRUE(window->waitForCount(2) && display->waitForCount(1));
    scene->close();
    ASSERT_TRUE(window->waitForStop());
    EXPECT_EQ(window->stops().front().message, "The recorded window was closed.");
    desk.hands.removeMonitor("R");
    ASSERT_TRUE(display->waitForStop());
    EXPECT_EQ(display->stops().front().message, "The recorded display was disconnected.");
    window->stop();
    display->stop();
    EXPECT_EQ(window->stops().size(), 1u);
    EXPECT_EQ(display->stops().size(), 1u);
}

TEST(X11ScreenStream, refusesWhatIsNotThere) {
    Desk desk;
    const StreamConfiguration gone[] = {{DisplaySource{77}, 640, 400, sixtieth},
                                        {WindowSource{0x7ffffff}, 640, 400, sixtieth}};
    for (const StreamConfiguration& each : gone) {
        StreamRun run(desk.platform, desk.mainQueue, each);
        ASSERT_TRUE(run.startError());
        EXPECT_EQ(run.startError()->domain, "X11");
        EXPECT_FALSE(run.startError()->message.empty());
        run.stop();
        EXPECT_EQ(run.count(), 0u);
        EXPECT_TRUE(run.stops().empty());
    }
    const std::string display = std::getenv("DISPLAY");
    unsetenv("DISPLAY");
    const auto platform = makeX11Platform(std::make_shared<SystemHostClock>(), desk.mainQueue, 1);
    setenv("DISPLAY", display.c_str(), 1);
    ASSERT_FALSE(platform);
    EXPECT_EQ(platform.error().domain, "X11");
    EXPECT_EQ(platform.error().message, "There is no X display: set DISPLAY, or start KELDRA from a desktop session.");
}

TEST(X11ScreenStream, endsWhenItIsStopped) {
    Desk desk;
    const SceneProcess scene(sceneAt(0, 0, {"--rate", "60"}));
    ScreenFrame kept;
    {
        const auto stream = desk.run(desk.display(desk.platform.screens->screens().front()));
        ASSERT_TRUE(stream->waitForCount(3));
        stream->stop();
        const std::size_t count = stream->count();
        stream->stop();
        EXPECT_EQ(stream->count(), count);
        EXPECT_TRUE(stream->stops().empty());
        kept = stream->last();
    }
    EXPECT_TRUE(showsScene(kept.pixels, 0, 0)) << "a frame outlives its stream";
    const auto dropped = desk.run(desk.display(desk.platform.screens->screens().front()));
    EXPECT_TRUE(dropped->waitForCount(1));
}

TEST(X11ScreenStream, goesOnWhenTheReceiverGivesFramesBack) {
    Desk desk;
    const SceneProcess scene(sceneAt(0, 0, {"--rate", "60"}));
    StreamConfiguration configuration = desk.display(desk.platform.screens->screens().front());
    configuration.queueDepth = 3;
    const auto stream = desk.run(configuration);
    stream->hold(true);
    ASSERT_TRUE(stream->waitForCount(3));
    const auto clock = desk.run(desk.display(desk.platform.screens->screens().front()));
    ASSERT_TRUE(clock->waitForCount(20));
    const std::size_t held = stream->count();
    EXPECT_LE(held, 4u) << "one may have come before they were held";
    const std::uint32_t newest = *readNumber(clock->last().pixels, scene::frameNumber);
    stream->hold(false);
    EXPECT_TRUE(stream->waitFor(
        [&](const ScreenFrame& frame) { return readNumber(frame.pixels, scene::frameNumber) >= newest; }));
}

} // namespace
} // namespace keldra
