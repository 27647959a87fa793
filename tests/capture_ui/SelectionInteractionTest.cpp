#include "capture_ui/SelectionInteraction.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

Screen screen(std::uint32_t number, const QRectF& frame) {
    return {number, QStringLiteral("Screen %1").arg(number), frame, frame, 1};
}

/// Two screens with a gap of ten between them, the second one higher up.
const QList<Screen> desk = {screen(1, {0, 0, 1000, 800}), screen(7, {1010, 100, 600, 600})};

WindowInfo window(std::uint32_t id, const QRectF& frame) {
    WindowInfo info;
    info.windowID = id;
    info.title = QStringLiteral("Window %1").arg(id);
    info.owner = "Program";
    info.frame = frame;
    return info;
}

TEST(WindowCandidates, AreTheLargeVisibleOrdinaryWindowsOfOthersFrontToBack) {
    QList<WindowInfo> windows;
    const auto add = [&](std::uint32_t id, QSizeF size) -> WindowInfo& {
        windows.append(window(id, QRectF(QPointF(5, 5), size)));
        return windows.last();
    };
    add(1, {300, 300});
    add(2, {120, 300});
    add(3, {121, 300});
    add(4, {300, 80});
    add(5, {300, 81});
    add(6, {300, 300}).isOwn = true;
    add(7, {300, 300}).layer = 20;
    add(8, {300, 300}).alpha = 0;
    add(9, {300, 300}).title.clear();
    add(10, {300, 300}).owner = "KELDRA";
    QStringList titles;
    QList<std::uint32_t> ids;
    for (const WindowCandidate& candidate : windowCandidates(windows)) {
        ids.append(candidate.windowID);
        titles.append(candidate.title);
    }
    EXPECT_EQ(ids, (QList<std::uint32_t>{1, 3, 5, 9, 10})) << "whoever calls itself by our name is not us";
    EXPECT_EQ(titles.value(3), "Program") << "for want of a title";
}

TEST(HitTests, APixelBelongsToOneOfTwoThatTouch) {
    // A point is the upper left corner of its pixel.
    const QRectF lower(0, 0, 100, 50);
    const QRectF upper(0, 50, 100, 50);
    const QRectF right(100, 0, 100, 50);
    const struct {
        QPointF point;
        std::array<bool, 3> lowerUpperRight;
    } rows[] = {{{0, 50}, {true, false, false}},   {{0, 51}, {false, true, false}},   {{99, 1}, {true, false, false}},
                {{100, 1}, {false, false, true}},  {{0, 0}, {false, false, false}},   {{50, 100}, {false, true, false}},
                {{-1, 20}, {false, false, false}}, {{200, 20}, {false, false, false}}};
    for (const auto& [point, expected] : rows)
        EXPECT_EQ((std::array{holdsPixel(lower, point), holdsPixel(upper, point), holdsPixel(right, point)}), expected)
            << point.x() << "," << point.y();
}

struct Drag {
    const char* name;
    QPointF from;
    QPointF to;
    std::optional<CaptureSelection> selection;
};

class RegionDrags : public testing::TestWithParam<Drag> {};

TEST_P(RegionDrags, EndAsTheyShould) {
    SelectionInteraction interaction(CaptureMode::region, {desk, {}}, 0);
    interaction.move(GetParam().from);
    EXPECT_FALSE(interaction.hasBegun());
    interaction.press(GetParam().from);
    EXPECT_TRUE(interaction.hasBegun());
    EXPECT_FALSE(interaction.draggedRegion());
    interaction.move(GetParam().to);
    EXPECT_EQ(interaction.phase(), SelectionInteraction::Phase::underWay);
    interaction.release(GetParam().to);
    EXPECT_EQ(interaction.selection(), GetParam().selection);
    EXPECT_EQ(interaction.phase(),
              GetParam().selection ? SelectionInteraction::Phase::completed : SelectionInteraction::Phase::cancelled);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RegionDrags,
    testing::Values(
        Drag{"aClick", {100, 100}, {100, 100}, {}}, Drag{"eighteenWide", {100, 100}, {118, 300}, {}},
        Drag{"eighteenHigh", {100, 100}, {300, 118}, {}},
        Drag{"justLargeEnough", {100, 100}, {118.5, 119}, RegionSelection{1, {100, 100, 18.5, 19}}},
        Drag{"backwards", {300, 400}, {100, 250}, RegionSelection{1, {100, 250, 200, 150}}},
        Drag{"acrossScreensMostlyOnTheSecond", {900, 150}, {1500, 450}, RegionSelection{7, {900, 150, 600, 300}}},
        Drag{"middleInTheGap", {905, 150}, {1105, 450}, {}}, Drag{"middleBelowTheSecond", {1100, 0}, {1300, 120}, {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(RegionSelecting, AReleaseOfAnEarlierPressIsNone) {
    SelectionInteraction interaction(CaptureMode::region, {desk, {}}, 0);
    interaction.release({500, 500});
    EXPECT_EQ(interaction.phase(), SelectionInteraction::Phase::underWay);
}

TEST(WindowSelecting, TheFrontmostUnderThePointer) {
    const QList<WindowCandidate> windows = {
        {11, {100, 100, 300, 300}, "Front"}, {12, {50, 50, 600, 600}, "Back"}, {13, {990, 0, 30, 90}, "In the gap"}};
    const auto begun = [&] { return SelectionInteraction(CaptureMode::window, {desk, windows}, 0); };
    SelectionInteraction interaction = begun();
    EXPECT_FALSE(interaction.highlightedWindow());
    interaction.move({200, 200});
    EXPECT_EQ(interaction.highlightedWindow(), windows[0]);
    interaction.move({500, 500});
    EXPECT_EQ(interaction.highlightedWindow(), windows[1]);
    interaction.move({900, 700});
    EXPECT_FALSE(interaction.highlightedWindow());
    interaction.press({500, 500});
    EXPECT_EQ(interaction.selection(), CaptureSelection(WindowSelection{1, 12, {50, 50, 600, 600}, "Back"}));

    for (const QPointF missed : {QPointF(900, 700), QPointF(1005, 20)}) {
        interaction = begun();
        interaction.press(missed);
        EXPECT_EQ(interaction.phase(), SelectionInteraction::Phase::cancelled) << missed.x();
    }
}

TEST(DisplaySelecting, MarksThePreferredAndStaysOnAMiss) {
    const auto begun = [](std::uint32_t preferred) {
        return SelectionInteraction(CaptureMode::display, {desk, {}}, preferred);
    };
    EXPECT_EQ(begun(7).highlightedDisplay(), desk[1]);
    EXPECT_EQ(begun(99).highlightedDisplay(), desk[0]) << "the first, when there is no such display";
    SelectionInteraction interaction = begun(7);
    interaction.press({1005, 20});
    interaction.release({1005, 20});
    EXPECT_EQ(interaction.phase(), SelectionInteraction::Phase::underWay);
    interaction.move({1005, 20});
    EXPECT_FALSE(interaction.highlightedDisplay());
    interaction.press({20, 20});
    EXPECT_EQ(interaction.selection(), CaptureSelection(DisplaySelection{1, "Screen 1"}));
}

TEST(DisplaySelecting, WhatIsOverStaysSo) {
    SelectionInteraction interaction(CaptureMode::display, {desk, {}}, 1);
    interaction.cancel();
    interaction.press({20, 20});
    EXPECT_EQ(interaction.phase(), SelectionInteraction::Phase::cancelled);
    EXPECT_FALSE(interaction.selection());
}

} // namespace
} // namespace keldra
