#include "ui_kit/DesktopCoordinates.h"

#include <gtest/gtest.h>

namespace keldra {

void PrintTo(const QRect& rect, std::ostream* out) {
    *out << rect.x() << "," << rect.y() << " " << rect.width() << "x" << rect.height();
}

namespace {

/// What Qt makes of a monitor.
DesktopCoordinates::Monitor monitor(const QRect& root, double factor, bool isPrimary = false) {
    return {root, QRect(root.topLeft(), (QSizeF(root.size()) / factor).toSize()), isPrimary};
}

struct Layout {
    const char* name;
    std::vector<QRect> roots; ///< the first is primary
};

const Layout layouts[] = {
    {"one", {{0, 0, 1920, 1080}}},
    {"beside", {{0, 0, 960, 1080}, {960, 0, 960, 1080}}},
    {"leftOfPrimary", {{1280, 0, 1920, 1080}, {0, 0, 1280, 1080}}},
    {"above", {{0, 1080, 1920, 1080}, {0, 0, 1920, 1080}}},
    {"uneven", {{0, 0, 1366, 768}, {1366, 300, 1280, 1024}}},
};

class Coordinates : public testing::TestWithParam<std::tuple<Layout, double>> {
protected:
    Coordinates() {
        std::vector<DesktopCoordinates::Monitor> monitors;
        // Qt lists the primary wherever it pleases.
        for (std::size_t i = roots.size(); i-- > 0;)
            monitors.push_back(monitor(roots[i], factor, i == 0));
        coordinates.emplace(monitors, factor);
    }
    /// A pixel of the desktop as events tell it, and as adapters name it.
    QPointF global(const QRect& root, QPoint pixel) const {
        return QPointF(root.topLeft()) + QPointF(pixel - root.topLeft()) / factor;
    }
    QPointF points(QPoint pixel) const {
        return {(pixel.x() - roots[0].x()) / factor, (roots[0].y() + roots[0].height() - pixel.y()) / factor};
    }

    const std::vector<QRect> roots = std::get<0>(GetParam()).roots;
    const double factor = std::get<1>(GetParam());
    std::optional<DesktopCoordinates> coordinates;
};

TEST_P(Coordinates, PlacesOfEventsArePixels) {
    for (const QRect& root : roots)
        for (const QPoint pixel : {root.topLeft(), root.topLeft() + QPoint(7, 3), root.center(), root.bottomRight()}) {
            const QPointF place = coordinates->toPoints(global(root, pixel));
            EXPECT_NEAR(place.x(), points(pixel).x(), 1e-9);
            EXPECT_NEAR(place.y(), points(pixel).y(), 1e-9);
        }
}

TEST_P(Coordinates, AWindowGoesWhereItsPointsAre) {
    for (const QRect& root : roots) {
        // Whole units from its screen's corner: nothing has to be rounded.
        const QSizeF units(120, 40);
        const QRectF wanted(points(root.topLeft()) + QPointF(100, -60 - units.height()), units);
        const QRect window = coordinates->toQt(wanted);
        EXPECT_EQ(window, QRect(root.topLeft() + QPoint(100, 60), units.toSize()));
        const QRectF back = coordinates->toPoints(window);
        EXPECT_NEAR(back.x(), wanted.x(), 1e-9);
        EXPECT_NEAR(back.y(), wanted.y(), 1e-9);
        EXPECT_EQ(back.size(), wanted.size());
        const QPoint corner = root.topLeft() + (QPointF(100, 60) * factor).toPoint();
        EXPECT_EQ(coordinates->toRoot(wanted),
                  QRect(corner, root.topLeft() + (QPointF(220, 100) * factor).toPoint() - QPoint(1, 1)));
    }
}

TEST_P(Coordinates, TheWholeDesktopIsAllItsPixels) {
    QRect whole;
    QList<Screen> screens;
    for (const QRect& root : roots) {
        whole |= root;
        Screen screen;
        screen.frame =
            QRectF(points(root.topLeft()) - QPointF(0, root.height() / factor), QSizeF(root.size()) / factor);
        screens.append(screen);
    }
    EXPECT_EQ(coordinates->toRoot(unionOfFrames(screens)), whole);
}

INSTANTIATE_TEST_SUITE_P(Layouts, Coordinates,
                         testing::Combine(testing::ValuesIn(layouts), testing::Values(1.0, 1.25, 1.5, 2.0)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + "At" +
                                    std::to_string(int(std::get<1>(row.param) * 100));
                         });

TEST(DesktopCoordinates, BeyondAllScreensTheNearestCounts) {
    const DesktopCoordinates coordinates({monitor({0, 0, 1000, 1000}, 2, true), monitor({1000, 0, 1000, 1000}, 2)}, 2);
    EXPECT_EQ(coordinates.toQt(QRectF(1100, 100, 50, 50)), QRect(1600, 350, 50, 50)) << "right of the second";
    EXPECT_EQ(coordinates.toQt(QRectF(-100, 100, 50, 50)), QRect(-100, 350, 50, 50)) << "left of the first";
    EXPECT_EQ(coordinates.toPoints(QRect(1600, 350, 50, 50)), QRectF(1100, 100, 50, 50));
}

TEST(DesktopCoordinates, NoScreenIsNoReasonToFail) {
    const DesktopCoordinates nowhere({}, 1);
    EXPECT_EQ(nowhere.toQt(QRectF(10, 20, 30, 40)), QRect(10, -60, 30, 40));
    EXPECT_TRUE(unionOfFrames({}).isEmpty());
}

} // namespace
} // namespace keldra
