#include "recording/PointerEffectsMonitor.h"

#include "doubles/ScriptedPointer.h"
#include "doubles/VirtualTime.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

class PointerEffectsMonitorTest : public testing::Test {
protected:
    PointerEffectsMonitorTest() {
        pointer->place = {100, 200};
        monitor.setOnClickDetected([this](double at) { told.push_back(at); });
    }
    void settings(bool indicators, bool sound, bool highlight = false) {
        PointerEffectsSettings some;
        some.showsClickIndicators = indicators;
        some.clickSoundEnabled = sound;
        some.showsCursorHighlight = highlight;
        monitor.updateSettings(some);
    }
    void poll() { time.advance(PointerEffectsMonitor::pollInterval); }
    double now() { return time.clock()->now().seconds(); }

    VirtualTime time;
    std::shared_ptr<ScriptedPointer> pointer = std::make_shared<ScriptedPointer>();
    std::shared_ptr<OwnWindows> ownWindows = std::make_shared<OwnWindows>();
    PointerEffectsMonitor monitor{pointer, ownWindows, time.clock(), time.scheduler()};
    std::vector<double> told;
};

TEST_F(PointerEffectsMonitorTest, RunsWhileAnythingIsOn) {
    EXPECT_FALSE(monitor.isRunning());
    for (const auto& [indicators, sound, highlight] :
         {std::tuple(true, false, false), {false, true, false}, {false, false, true}}) {
        settings(indicators, sound, highlight);
        EXPECT_TRUE(monitor.isRunning());
        settings(false, false, false);
        EXPECT_FALSE(monitor.isRunning());
    }
}

TEST_F(PointerEffectsMonitorTest, FollowsThePointerAndClampsWhatIsOutOfRange) {
    PointerEffectsSettings wild{true, true, true, 9, -1, 500};
    monitor.updateSettings(wild);
    pointer->place = {5, 6};
    poll();
    const PointerEffectsSnapshot snapshot = monitor.snapshot();
    EXPECT_EQ(snapshot.cursorLocation, QPointF(5, 6));
    EXPECT_EQ(snapshot.clickIndicatorIntensity, 2);
    EXPECT_EQ(snapshot.cursorHighlightIntensity, 0.2);
    EXPECT_EQ(snapshot.cursorHighlightSize, 80);
    EXPECT_TRUE(snapshot.showsCursorHighlight);
}

TEST_F(PointerEffectsMonitorTest, AClickRipplesForItsTime) {
    settings(true, false);
    pointer->click();
    poll();
    const double clicked = now();
    EXPECT_TRUE(monitor.snapshot().isClickPressActive);
    pointer->place = {1, 1};
    time.advance(260ms);
    const PointerEffectsSnapshot half = monitor.snapshot();
    EXPECT_FALSE(half.isClickPressActive);
    ASSERT_EQ(half.clickRipples.size(), 1u);
    EXPECT_EQ(half.clickRipples[0].location, QPointF(100, 200)) << "where it was clicked";
    EXPECT_NEAR(half.clickRipples[0].progress, (now() - clicked) / 0.52, 1e-6);
    time.advance(270ms);
    EXPECT_TRUE(monitor.snapshot().clickRipples.empty());
}

TEST_F(PointerEffectsMonitorTest, OnlyARisingEdgeIsAClick) {
    settings(true, false);
    pointer->held = 1;
    poll();
    pointer->held = 5;
    poll();
    poll();
    EXPECT_EQ(monitor.snapshot().clickRipples.size(), 1u) << "a second button while one is down is no click";
    pointer->held = 0;
    poll();
    pointer->click(4);
    poll();
    poll();
    EXPECT_EQ(monitor.snapshot().clickRipples.size(), 2u) << "any button counts, however short";
}

TEST_F(PointerEffectsMonitorTest, ClicksAreTimedFromTheBeginOfTheCapture) {
    settings(false, true);
    pointer->click();
    poll();
    EXPECT_TRUE(told.empty()) << "before the capture";
    monitor.beginClickCapture();
    const double begin = now();
    time.advance(1s);
    pointer->click();
    poll();
    const double clicked = now();
    EXPECT_TRUE(monitor.snapshot().clickRipples.empty()) << "sound alone shows nothing";
    EXPECT_FALSE(monitor.snapshot().isClickPressActive);
    EXPECT_EQ(told, std::vector{clicked});
    EXPECT_EQ(monitor.takeCapturedClickTimes(), std::vector{clicked - begin});
    EXPECT_TRUE(monitor.takeCapturedClickTimes().empty());
    poll();
    pointer->click();
    poll();
    EXPECT_EQ(told.size(), 1u) << "who took the times is told no more";
}

struct SurfaceRow {
    const char* name;
    OwnWindow window;
    bool isExcluded;
};

class Surfaces : public PointerEffectsMonitorTest, public testing::WithParamInterface<SurfaceRow> {};

TEST_P(Surfaces, ThatRecordingsCannotSeeShowNoEffects) {
    settings(true, true, true);
    monitor.beginClickCapture();
    ownWindows->add(GetParam().window);
    pointer->held = 1;
    poll();
    const PointerEffectsSnapshot snapshot = monitor.snapshot();
    EXPECT_EQ(snapshot.cursorLocation.has_value(), !GetParam().isExcluded);
    EXPECT_EQ(snapshot.isClickPressActive, !GetParam().isExcluded);
    EXPECT_EQ(snapshot.clickRipples.empty(), GetParam().isExcluded);
    EXPECT_EQ(told.empty(), GetParam().isExcluded);
    // The press is known all the same: leaving the surface with it is no click.
    pointer->place = {5000, 5000};
    poll();
    EXPECT_EQ(told.empty(), GetParam().isExcluded);
}

const QRectF around(50, 150, 100, 100);

INSTANTIATE_TEST_SUITE_P(
    , Surfaces,
    testing::Values(SurfaceRow{"panel", {"control-panel", SharingType::none, true, 1, around}, true},
                    SurfaceRow{"shared", {"editor", SharingType::readOnly, true, 1, around}, false},
                    SurfaceRow{"hidden", {"control-panel", SharingType::none, false, 1, around}, false},
                    SurfaceRow{"faded", {"control-panel", SharingType::none, true, 0.01, around}, false},
                    SurfaceRow{"selection", {"selection-overlay", SharingType::none, true, 1, around}, false},
                    SurfaceRow{"preview", {"selection-preview", SharingType::none, true, 1, around}, false},
                    SurfaceRow{"near", {"panel", SharingType::none, true, 1, {101.5, 150, 50, 100}}, true},
                    SurfaceRow{"beside", {"panel", SharingType::none, true, 1, {102.5, 150, 50, 100}}, false}),
    [](const auto& row) { return row.param.name; });

TEST_F(PointerEffectsMonitorTest, AStopForgetsAndTheNextStartSeesAHeldButtonAnew) {
    settings(true, false);
    pointer->held = 1;
    poll();
    settings(false, false);
    EXPECT_TRUE(monitor.snapshot().clickRipples.empty());
    pointer->click(2);
    time.advance(1s);
    settings(true, false);
    EXPECT_EQ(monitor.snapshot().clickRipples.size(), 1u);
    pointer->held = 0;
    settings(false, false);
    pointer->click();
    settings(true, false);
    EXPECT_TRUE(monitor.snapshot().clickRipples.empty()) << "what came while nobody looked is no click of now";
}

} // namespace
} // namespace keldra
