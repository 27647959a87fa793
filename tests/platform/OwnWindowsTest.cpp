// Our own windows are in no picture of a display, not even for a moment.

#include "platform/Desk.h"

#include <atomic>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using scene::colourAt;

/// Windows of ours over a scene, with or without a window manager's frame.
class OwnWindows : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (isManaged && !desk.hands.hasWindowManager())
            GTEST_SKIP() << "nobody manages windows";
        std::vector<std::string> arguments = sceneAt(200, 200, {"--rate", "50"});
        if (isManaged)
            arguments.emplace_back("--managed");
        scene.emplace(arguments);
        place = desk.hands.clientRect(scene->window());
    }
    /// Waits until the stream shows the scene whole: what we covered may have to be painted first.
    bool becomesWhole(StreamRun& stream) const {
        return stream.waitFor([this](const ScreenFrame& frame) {
            const PixelRect now = desk.hands.clientRect(scene->window());
            return bool(showsScene(frame.pixels, now.x, now.y));
        });
    }
    xcb_window_t make() const {
        return desk.hands.makeOwnWindow({place.x + 10, place.y + 30, 500, 200}, magenta, isManaged);
    }
    /// Returns when it covers the scene.
    void show(xcb_window_t window) const {
        desk.hands.mapWindow(window);
        EXPECT_TRUE(eventually([&] {
            const QList<WindowInfo> windows = desk.platform.windows->windows();
            return !isManaged || (!windows.empty() && windows.front().windowID == window);
        }));
    }
    /// A stream in which nobody must ever see one of ours.
    std::unique_ptr<StreamRun> watch() {
        return desk.run(desk.display(desk.platform.screens->screens().front()), [this](const ScreenFrame& frame) {
            seen += 1;
            exposed += showsOwn(frame.pixels);
        });
    }
    bool showsOwn(const PixelBuffer& picture) const {
        for (int y = place.y; y < place.y + place.height; y += 8)
            for (int x = place.x; x < place.x + place.width; x += 8)
                if (colourAt(picture, x, y) == magenta)
                    return true;
        return false;
    }

    const bool isManaged = GetParam();
    Desk desk;
    std::optional<SceneProcess> scene;
    PixelRect place;
    std::atomic<int> seen = 0;
    std::atomic<int> exposed = 0;
};

TEST_P(OwnWindows, areLeftOutFromTheFirstFrameOn) {
    const xcb_window_t early = make();
    show(early);
    const auto stream = watch();
    ASSERT_TRUE(stream->waitForCount(10));
    desk.hands.destroyWindow(early);
    for (int i = 0; i < 10; ++i) {
        const xcb_window_t window = make();
        show(window);
        ASSERT_TRUE(stream->waitForCount(stream->count() + 3));
        ASSERT_TRUE(becomesWhole(*stream));
        desk.hands.moveWindow(window, place.x + 40, place.y + 20);
        ASSERT_TRUE(stream->waitForCount(stream->count() + 2));
        desk.hands.destroyWindow(window);
        ASSERT_TRUE(stream->waitForCount(stream->count() + 2));
    }
    EXPECT_GT(seen, 70);
    EXPECT_EQ(exposed, 0);
    EXPECT_TRUE(isOpaque(stream->last().pixels));
}

TEST_P(OwnWindows, areLeftOutHoweverFastTheyComeAndGo) {
    const xcb_window_t restless = make();
    std::atomic<bool> isFollowed = true;
    // Other hands, because this thread waits for the streams.
    SerialQueue others("restless window");
    Timer toggling = others.every(1ms, [&, isShown = false]() mutable {
        isShown = !isShown;
        if (!isShown)
            desk.hands.unmapWindow(restless);
        // Again and again: a manager may miss a window that comes while it lets it go.
        const bool isDone = eventually([&] {
            if (isShown)
                desk.hands.mapWindow(restless);
            return isShown ? desk.hands.isViewable(restless) : !desk.hands.isFramed(restless);
        });
        isFollowed = isFollowed && isDone;
    });
    // Each stream starts anew.
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(watch()->waitForCount(5));
    const auto stream = watch();
    EXPECT_TRUE(stream->waitForCount(5));
    others.sync([&] { toggling.cancel(); });
    desk.hands.destroyWindow(restless);
    // Only now: a restless window may uncover the scene more often than it paints.
    EXPECT_TRUE(becomesWhole(*stream));
    EXPECT_TRUE(isFollowed);
    EXPECT_GE(seen, 40);
    EXPECT_EQ(exposed, 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, OwnWindows, testing::Values(false, true),
                         [](const auto& test) { return test.param ? "managed" : "unmanaged"; });

TEST(X11ScreenStream, keepsTheBackgroundUnderOwnWindows) {
    Desk desk;
    const X11Connection& x = desk.hands.x();
    const std::uint32_t colour = 0x205080;
    xcb_change_window_attributes(x.raw(), x.root(), XCB_CW_BACK_PIXEL, &colour);
    xcb_clear_area(x.raw(), 0, x.root(), 0, 0, 0, 0);
    x.roundTrip();
    const Screen screen = desk.platform.screens->screens().front();
    const xcb_window_t own = desk.hands.makeOwnWindow({600, 300, 300, 300}, magenta, false);
    desk.hands.mapWindow(own);
    if (!desk.hands.isComposited()) {
        const auto stream = desk.run(desk.display(screen));
        ASSERT_TRUE(stream->waitForCount(1));
        EXPECT_EQ(colourAt(stream->last().pixels, 700, 400), colour) << "borrowed from the root";
        EXPECT_EQ(colourAt(stream->last().pixels, 10, 10), colour);
    }

    const xcb_pixmap_t published = x.newID();
    const xcb_gcontext_t gc = x.newID();
    const std::uint32_t other = 0x804020;
    xcb_create_pixmap(x.raw(), x.screen().root_depth, published, x.root(), 64, 64);
    xcb_create_gc(x.raw(), gc, published, XCB_GC_FOREGROUND, &other);
    const xcb_rectangle_t all{0, 0, 64, 64};
    xcb_poly_fill_rectangle(x.raw(), published, gc, 1, &all);
    const auto stream = desk.run(desk.display(screen));
    desk.hands.setNumbers(x.root(), "_XROOTPMAP_ID", XCB_ATOM_PIXMAP, {published});
    EXPECT_TRUE(stream->waitFor([&](const ScreenFrame& frame) { return colourAt(frame.pixels, 700, 400) == other; }))
        << "published by whoever draws it";
    xcb_delete_property(x.raw(), x.root(), desk.hands.atom("_XROOTPMAP_ID"));
    desk.hands.destroyWindow(own);
}

} // namespace
} // namespace keldra
