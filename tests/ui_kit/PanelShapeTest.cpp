#include "ui_kit/PanelShape.h"

#include "ui_kit/HintWindow.h"
#include "ui_kit/SymbolImage.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(PanelShape, IsCutInPixelsAlongItsParts) {
    const auto part = [](double x, double width, double radius) {
        return QVariantMap{{"x", x}, {"y", 0}, {"width", width}, {"height", 20}, {"radius", radius}};
    };
    const QList<RoundedRect> parts = shapeParts({part(0, 20, 10), part(30, 0, 0), part(40, 10, 0), QVariant(3)});
    EXPECT_EQ(parts, (QList<RoundedRect>{{{0, 0, 20, 20}, 10}, {{40, 0, 10, 20}, 0}}));
    const QRegion region = shapeRegion(parts, 2);
    EXPECT_EQ(region.boundingRect(), QRect(0, 0, 100, 40));
    const std::pair<QPoint, bool> points[] = {{{20, 20}, true}, {{1, 1}, false}, {{60, 20}, false}, {{81, 1}, true}};
    for (const auto& [point, isInside] : points)
        EXPECT_EQ(region.contains(point), isInside) << point.x() << " " << point.y();
}

TEST(Hint, StandsAboveItsItemAndStaysOnItsScreen) {
    const QRect screen(100, 0, 800, 600);
    const struct {
        const char* name;
        QRect item;
        QPoint wanted;
    } rows[] = {
        {"above", {400, 300, 40, 40}, {370, 272}},
        {"below at the top", {400, 10, 40, 40}, {370, 58}},
        {"left edge", {100, 300, 20, 20}, {100, 272}},
        {"right edge", {890, 300, 10, 20}, {800, 272}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(hintPosition(row.item, {100, 20}, screen), row.wanted) << row.name;
}

} // namespace
} // namespace keldra
