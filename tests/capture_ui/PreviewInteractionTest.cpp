#include "capture_ui/PreviewInteraction.h"

#include "capture_ui/SelectionGeometry.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using enum PreviewDrag;

TEST(PreviewDragAt, CornersComeBeforeTheInside) {
    const QRectF region(100, 200, 300, 150);
    const struct {
        QPointF point;
        PreviewDrag drag;
    } rows[] = {{{250, 270}, move},      {{100, 200}, bottomLeft},   {{112, 200}, bottomLeft},  {{113, 201}, move},
                {{92, 192}, bottomLeft}, {{91, 191}, none},          {{400, 200}, bottomRight}, {{100, 350}, topLeft},
                {{395, 345}, topRight},  {{408.4, 358.4}, topRight}, {{250, 199}, none},        {{401, 270}, none},
                {{100, 270}, move},      {{250, 350}, move}};
    for (const auto& [point, drag] : rows)
        EXPECT_EQ(previewDragAt(region, point), drag) << point.x() << "," << point.y();
    EXPECT_EQ(previewDragAt({0, 0, 20, 20}, {10, 10}), move);
    EXPECT_EQ(previewDragAt({0, 0, 16, 16}, {8, 8.5}), bottomLeft) << "the first of all that are near";
}

struct Row {
    const char* name;
    PreviewDrag drag;
    QPointF offset;
    QRectF result;
};

class PreviewDrags : public testing::TestWithParam<Row> {};

TEST_P(PreviewDrags, KeepSizeAndPlace) {
    const QRectF initial(100, 200, 300, 150);
    const QRectF desktop(-200, 0, 1200, 800);
    PreviewInteraction interaction(initial, desktop);
    interaction.press({500, 500}, GetParam().drag);
    // The way there does not matter.
    interaction.move({-4000, 9000});
    interaction.move(QPointF(500, 500) + GetParam().offset);
    interaction.release();
    EXPECT_EQ(interaction.region(), GetParam().result)
        << interaction.region().x() << "," << interaction.region().y() << " " << interaction.region().width() << "x"
        << interaction.region().height();
    interaction.move({0, 0});
    EXPECT_EQ(interaction.region(), GetParam().result) << "nothing is held any more";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PreviewDrags,
    testing::Values(Row{"nothing", none, {30, 40}, {100, 200, 300, 150}},
                    Row{"moved", move, {30, -40}, {130, 160, 300, 150}},
                    Row{"topLeft", topLeft, {30, 40}, {130, 200, 270, 190}},
                    Row{"topRight", topRight, {30, 40}, {100, 200, 330, 190}},
                    Row{"bottomLeft", bottomLeft, {30, 40}, {130, 240, 270, 110}},
                    Row{"bottomRight", bottomRight, {30, 40}, {100, 240, 330, 110}},
                    // Past the opposite edge it stops and does not flip; that edge holds.
                    Row{"topLeftTooSmall", topLeft, {290, -300}, {320, 200, 80, 80}},
                    Row{"topRightTooSmall", topRight, {-500, -300}, {100, 200, 80, 80}},
                    Row{"bottomLeftTooSmall", bottomLeft, {500, 500}, {320, 270, 80, 80}},
                    Row{"bottomRightTooSmall", bottomRight, {-500, 90}, {100, 270, 80, 80}},
                    // The desktop begins left of the primary screen.
                    Row{"slidesAlongTheLeftEdge", move, {-900, 50}, {-200, 250, 300, 150}},
                    Row{"slidesIntoTheUpperRightCorner", move, {2000, 2000}, {700, 650, 300, 150}},
                    Row{"resizedOverTheEdgeMoves", bottomLeft, {-400, -300}, {-200, 0, 700, 450}},
                    Row{"resizedOverTheUpperEdgeMoves", topRight, {700, 500}, {0, 150, 1000, 650}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(PreviewDrags, WhatIsLargerThanTheDesktopKeepsItsFarEdgeOnIt) {
    EXPECT_EQ(draggedPreview(move, {0, 0, 900, 100}, {50, 0}, {0, 0, 800, 600}), QRectF(-100, 0, 900, 100));
}

TEST(SizeLabel, TellsTheRoundedSizeBelowTheRectangleWhereThereIsRoom) {
    EXPECT_EQ(sizeLabelText({0, 0, 640.5, 479.4}), "641 x 479");
    const QRectF bounds(-500, 0, 1500, 800);
    const struct {
        const char* name;
        QRectF selected;
        std::optional<QRectF> pill;
    } rows[] = {{"below", {100, 300, 200, 100}, QRectF(162, 270, 76, 22)},
                {"narrow", {100, 300, 63.9, 100}, {}},
                {"low", {100, 300, 200, 39.9}, {}},
                {"just room", {100, 38, 200, 100}, QRectF(162, 8, 76, 22)},
                {"no room below", {100, 37, 200, 100}, QRectF(162, 45, 76, 22)},
                {"whole desktop", bounds, QRectF(212, 8, 76, 22)},
                {"left edge", {-500, 300, 64, 100}, QRectF(-492, 270, 76, 22)},
                {"right edge", {936, 300, 64, 100}, QRectF(916, 270, 76, 22)}};
    for (const auto& [name, selected, pill] : rows)
        EXPECT_EQ(sizeLabelPill(selected, 59.3, bounds), pill) << name;
}

TEST(InstructionPill, IsInTheMiddleOfTheMainScreenAndAsWideAsTheWiderLine) {
    EXPECT_EQ(instructionPill({100, 50, 1000, 600}, 200, 180), QRectF(486, 327, 228, 46));
    EXPECT_EQ(instructionPill({100, 50, 1000, 600}, 100, 180), QRectF(496, 327, 208, 46));
    const QRectF name = displayNamePill({100, 50, 1000, 600}, 60);
    EXPECT_LT(name.y() + name.height(), 327) << "below the instruction";
    EXPECT_EQ(name.center().x(), 600);
}

} // namespace
} // namespace keldra
