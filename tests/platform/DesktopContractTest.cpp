// Screens, WindowList and ScreenStream must agree: what one says is where, the others show there.

#include "platform/TestDesktop.h"
#include "platform/x11/X11Platform.h"

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using scene::colourAt;
using scene::readNumber;

constexpr std::uint32_t magenta = 0xff00ff;
constexpr Duration sixtieth = 16'666'667ns;

/// A desktop with its adapters at one scale factor.
class Desk {
public:
    explicit Desk(double scaleFactor = 1) : scale(scaleFactor) {
        auto made = makeX11Platform(std::make_shared<SystemHostClock>(), mainQueue, scaleFactor);
        if (!made)
            throw std::runtime_error(made.error().message);
        platform = std::move(*made);
    }

    std::optional<WindowInfo> find(xcb_window_t window) const {
        for (const WindowInfo& info : platform.windows->windows())
            if (info.windowID == window)
                return info;
        return std::nullopt;
    }
    /// A rectangle of desktop points as pixels of that screen's pictures.
    PixelRect inScreen(const QRectF& rect, const Screen& screen) const {
        const auto pixels = [this](double points) { return int(std::lround(points * scale)); };
        return {pixels(rect.x() - screen.frame.x()),
                pixels(screen.frame.y() + screen.frame.height() - rect.y() - rect.height()), pixels(rect.width()),
                pixels(rect.height())};
    }
    StreamConfiguration display(const Screen& screen, Duration interval = sixtieth, bool showsCursor = false) const {
        return {DisplaySource{screen.number}, int(std::lround(screen.frame.width() * scale)),
                int(std::lround(screen.frame.height() * scale)), interval, showsCursor};
    }
    StreamConfiguration window(const WindowInfo& info, Duration interval = sixtieth, bool showsCursor = false) const {
        return {WindowSource{info.windowID}, int(std::lround(info.frame.width() * scale)),
                int(std::lround(info.frame.height() * scale)), interval, showsCursor};
    }
    std::unique_ptr<StreamRun> run(const StreamConfiguration& configuration,
                                   std::function<void(const ScreenFrame&)> inspector = nullptr) {
        auto stream = std::make_unique<StreamRun>(platform, mainQueue, configuration, std::move(inspector));
        EXPECT_FALSE(stream->startError()) << stream->startError()->message;
        return stream;
    }

    double scale;
    TestDesktop hands;
    PumpedExecutor mainQueue;
    Platform platform;
};

/// Whether the scene's patches, number and clock are at that place of the picture, to the pixel.
testing::AssertionResult showsScene(const PixelBuffer& picture, int left, int top) {
    for (const scene::Patch& patch : scene::patches)
        for (const int x : {patch.area.x, patch.area.x + patch.area.width - 1})
            for (const int y : {patch.area.y, patch.area.y + patch.area.height - 1}) {
                if (left + x < 0 || left + x >= picture.width() || top + y < 0 || top + y >= picture.height())
                    return testing::AssertionFailure() << patch.name << " is outside";
                if (colourAt(picture, left + x, top + y) != patch.rgb)
                    return testing::AssertionFailure() << patch.name << " is not at " << left + x << "," << top + y;
            }
    if (!readNumber(picture, scene::frameNumber, left, top) ||
        !readNumber(picture, scene::clockMilliseconds, left, top))
        return testing::AssertionFailure() << "the numbers are not readable";
    return testing::AssertionSuccess();
}

testing::AssertionResult isOpaque(const PixelBuffer& picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.row(0, y)[4 * x + 3] != 255)
                return testing::AssertionFailure()
                       << "alpha " << int(picture.row(0, y)[4 * x + 3]) << " at " << x << "," << y;
    return testing::AssertionSuccess();
}

std::vector<std::string> sceneAt(int x, int y, const std::vector<std::string>& more, int width = 640,
                                 int height = 400) {
    const auto text = [](int number) { return std::to_string(number); };
    std::vector<std::string> arguments{"--geometry", text(width) + "x" + text(height) + "+" + text(x) + "+" + text(y)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

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
    for (int i = 0; i < 8; ++i) {
        const auto stream = watch();
        EXPECT_TRUE(stream->waitForCount(5));
        EXPECT_TRUE(becomesWhole(*stream));
    }
    others.sync([&] { toggling.cancel(); });
    desk.hands.destroyWindow(restless);
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

TEST(X11ScreenStream, deliversOnlyWhatChanges) {
    Desk desk;
    desk.hands.setMonitors({{"L", {0, 0, 960, 1080}}, {"R", {960, 0, 960, 1080}}});
    const QList<Screen> screens = desk.platform.screens->screens();
    const auto still = desk.run(desk.display(screens[0]));
    ASSERT_TRUE(still->waitForCount(1));
    // Another monitor's changes are no news, and a slow source brings no more frames than it has pictures.
    const SceneProcess scene(sceneAt(1000, 100, {"--rate", "10"}));
    const auto moving = desk.run(desk.display(screens[1]));
    ASSERT_TRUE(moving->waitFor([](const ScreenFrame& frame) { return bool(showsScene(frame.pixels, 40, 100)); }));
    const std::uint32_t first = *readNumber(moving->last().pixels, scene::frameNumber, 40, 100);
    ASSERT_TRUE(moving->waitFor(
        [&](const ScreenFrame& frame) { return readNumber(frame.pixels, scene::frameNumber, 40, 100) >= first + 10; }));
    const std::uint32_t last = *readNumber(moving->last().pixels, scene::frameNumber, 40, 100);
    EXPECT_LE(moving->count(), last - first + 1 + 2);
    EXPECT_TRUE(desk.hands.isComposited() || still->count() == 1);
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
