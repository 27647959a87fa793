// Screens, WindowList and ScreenStream must agree: what one says is where, the others show there.

#include "platform/Desk.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace keldra {
namespace {

struct Layout {
    const char* name;
    std::vector<TestDesktop::Monitor> monitors;
    /// Where the scene is put, root pixels.
    int x;
    int y;
};

class DesktopAgreement : public testing::TestWithParam<std::tuple<Layout, double>> {};

TEST_P(DesktopAgreement, onARectangleAndItsPixels) {
    const auto& [layout, scale] = GetParam();
    Desk desk(scale);
    desk.hands.setMonitors(layout.monitors);
    const SceneProcess scene(sceneAt(layout.x, layout.y, {"--managed", "--still"}));
    std::optional<WindowInfo> info;
    ASSERT_TRUE(eventually([&] { return (info = desk.find(scene.window())).has_value(); }));

    const PixelRect client = desk.hands.clientRect(scene.window());
    const std::vector<int> border = desk.hands.decoration(scene.window());
    const QRectF frame = info->frame;
    EXPECT_DOUBLE_EQ(frame.width() * scale, client.width + border[0] + border[1]);
    EXPECT_DOUBLE_EQ(frame.height() * scale, client.height + border[2] + border[3]);
    EXPECT_EQ(desk.platform.windows->liveFrame(scene.window()), frame);

    const QList<Screen> screens = desk.platform.screens->screens();
    ASSERT_EQ(screens.size(), std::max<qsizetype>(1, qsizetype(layout.monitors.size())));
    EXPECT_EQ(screens.front().frame.topLeft(), QPointF(0, 0)) << "the primary's lower left corner is the origin";
    int showing = 0;
    for (const Screen& screen : screens) {
        EXPECT_EQ(screen.backingScaleFactor, scale);
        if (!screen.frame.contains(frame))
            continue;
        ++showing;
        const PixelRect place = desk.inScreen(frame, screen);
        const auto stream = desk.run(desk.display(screen));
        EXPECT_TRUE(
            stream->waitFor([&, left = place.x + border[0], top = place.y + border[2]](const ScreenFrame& shown) {
                return bool(showsScene(shown.pixels, left, top));
            }));
        EXPECT_TRUE(isOpaque(stream->last().pixels));
        EXPECT_TRUE(desk.hands.isComposited() || stream->count() == 1) << "the first frame is whole";
    }
    EXPECT_EQ(showing, 1);

    const auto stream = desk.run(desk.window(*info));
    ASSERT_TRUE(stream->waitForCount(1));
    EXPECT_TRUE(showsScene(stream->last().pixels, border[0], border[2]));
    EXPECT_TRUE(isOpaque(stream->last().pixels));

    std::optional<Result<ShareableContentSnapshot>> content;
    desk.platform.shareableContent->current(
        [&](Result<ShareableContentSnapshot> answer) { content = std::move(answer); });
    ASSERT_FALSE(content);
    ASSERT_TRUE(desk.mainQueue.pumpUntil([&] { return content.has_value(); }));
    ASSERT_TRUE(*content);
    EXPECT_EQ((*content)->displays.size(), screens.size());
    EXPECT_TRUE(std::any_of((*content)->windows.begin(), (*content)->windows.end(), [&](const auto& window) {
        return window.windowID == scene.window() && window.frame == frame;
    }));
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, DesktopAgreement,
    testing::Combine(
        testing::Values(Layout{"single", {}, 300, 200},
                        Layout{"beside", {{"L", {0, 0, 960, 1080}}, {"R", {960, 0, 960, 1080}}}, 1100, 300},
                        Layout{"leftOfPrimary", {{"E", {960, 0, 960, 1080}}, {"W", {0, 0, 960, 1080}}}, 150, 500},
                        Layout{"above", {{"B", {0, 540, 1920, 540}}, {"T", {0, 0, 1920, 540}}}, 700, 60}),
        testing::Values(1.0, 1.5)),
    [](const auto& test) {
        return std::string(std::get<0>(test.param).name) + (std::get<1>(test.param) == 1 ? "" : "Scaled");
    });

TEST(X11Screens, keepTheirNumbersForTheRun) {
    Desk desk;
    const std::uint32_t whole = desk.platform.screens->screens().front().number;
    EXPECT_EQ(whole, 1u);
    desk.hands.setMonitors({{"A", {960, 0, 960, 1080}}, {"B", {0, 0, 960, 1080}}});
    const QList<Screen> first = desk.platform.screens->screens();
    ASSERT_EQ(first.size(), 2);
    EXPECT_EQ(first[0].name, "A");
    EXPECT_EQ(first[0].number, 2u);
    EXPECT_EQ(first[1].number, 3u);
    desk.hands.setMonitors({{"B", {0, 0, 960, 1080}}, {"A", {960, 0, 960, 1080}}});
    const QList<Screen> second = desk.platform.screens->screens();
    ASSERT_EQ(second.size(), 2);
    EXPECT_EQ(second[0].number, 3u);
    EXPECT_EQ(second[1].number, 2u);
    EXPECT_EQ(findScreen(second, 2)->frame, QRectF(960, 0, 960, 1080));
}

TEST(X11Screens, leavePanelsOutOfTheVisibleFrame) {
    Desk desk(1.5);
    if (!desk.hands.hasWindowManager())
        GTEST_SKIP() << "nobody keeps a work area";
    const xcb_window_t dock = desk.hands.makeOwnWindow({0, 0, 1920, 60}, magenta, true);
    desk.hands.setNumbers(dock, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {desk.hands.atom("_NET_WM_WINDOW_TYPE_DOCK")});
    desk.hands.setNumbers(dock, "_NET_WM_STRUT", XCB_ATOM_CARDINAL, {0, 0, 60, 0});
    desk.hands.mapWindow(dock);
    EXPECT_TRUE(
        eventually([&] { return desk.platform.screens->screens().front().visibleFrame == QRectF(0, 0, 1280, 680); }));
    EXPECT_EQ(desk.platform.screens->screens().front().frame, QRectF(0, 0, 1280, 720));
    EXPECT_TRUE(eventually([&] {
        const auto info = desk.find(dock);
        return info && info->layer != 0;
    }));
    desk.hands.destroyWindow(dock);
}

TEST(X11WindowList, tellsWindowsApart) {
    Desk desk;
    const SceneProcess lower(sceneAt(100, 100, {"--managed", "--still", "--title", "Größe"}));
    const SceneProcess upper(sceneAt(200, 200, {"--managed", "--still", "--title", ""}));
    const xcb_window_t own = desk.hands.makeOwnWindow({300, 300, 200, 200}, magenta, true);
    desk.hands.setNumbers(own, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {0x80000000});
    desk.hands.mapWindow(own);
    ASSERT_TRUE(eventually([&] { return desk.find(lower.window()) && desk.find(upper.window()) && desk.find(own); }));

    EXPECT_EQ(desk.find(lower.window())->title, QString::fromUtf8("Größe"));
    EXPECT_EQ(desk.find(upper.window())->title, "KeldraScene") << "its owner, for want of a name";
    EXPECT_EQ(desk.find(upper.window())->owner, "KeldraScene");
    EXPECT_EQ(desk.find(upper.window())->layer, 0);
    EXPECT_EQ(desk.find(upper.window())->alpha, 1);
    EXPECT_FALSE(desk.find(upper.window())->isOwn);
    EXPECT_TRUE(desk.find(own)->isOwn);
    EXPECT_NEAR(desk.find(own)->alpha, 0.5, 0.001);
    const auto position = [&](xcb_window_t window) {
        const QList<WindowInfo> windows = desk.platform.windows->windows();
        return std::find_if(windows.begin(), windows.end(), [&](const auto& info) { return info.windowID == window; }) -
               windows.begin();
    };
    const auto raise = [&](xcb_window_t window) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(desk.hands.x().raw(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        desk.hands.x().roundTrip();
    };
    raise(upper.window());
    EXPECT_TRUE(eventually([&] { return position(upper.window()) < position(lower.window()); }));
    raise(lower.window());
    EXPECT_TRUE(eventually([&] { return position(lower.window()) < position(upper.window()); }));

    desk.hands.destroyWindow(own);
    EXPECT_TRUE(eventually([&] { return !desk.find(own); }));
    EXPECT_EQ(desk.platform.windows->liveFrame(own), std::nullopt);
}

TEST(X11WindowList, leavesClientSideShadowsOut) {
    Desk desk;
    const SceneProcess scene(sceneAt(200, 200, {"--still"}, 640, 400));
    const QRectF whole = *desk.platform.windows->liveFrame(scene.window());
    desk.hands.setNumbers(scene.window(), "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL, {8, 8, 6, 10});
    EXPECT_EQ(desk.platform.windows->liveFrame(scene.window()), whole.adjusted(8, 10, -8, -6));

    const auto stream = desk.run({WindowSource{scene.window()}, 624, 384, sixtieth, false});
    ASSERT_TRUE(stream->waitForCount(1));
    EXPECT_TRUE(showsScene(stream->last().pixels, -8, -6));
}

} // namespace
} // namespace keldra
