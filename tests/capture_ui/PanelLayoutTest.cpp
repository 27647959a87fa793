#include "capture_ui/PanelLayout.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace panelLayout;

QList<Screen> screensOf(const QList<QRectF>& usable) {
    QList<Screen> screens;
    for (const QRectF& each : usable)
        screens.append({std::uint32_t(screens.size() + 1), {}, each, each, 1});
    return screens;
}

const QRectF fullHd(0, 40, 1920, 1040);

TEST(PanelLayout, BeginsLowInTheMiddleOfTheMainScreen) {
    EXPECT_EQ(firstControlOrigin(screensOf({fullHd, {1920, 0, 800, 600}})), QPointF(702.5, 76));
    EXPECT_EQ(firstControlOrigin({}), QPointF(380, 80));
    EXPECT_EQ(firstWebcamOrigin({702.5, 76}), QPointF(1231.5, 76));
}

TEST(PanelLayout, ClampsToTheTouchedScreenOrTheMainOne) {
    const QList<Screen> screens = screensOf({fullHd, {1920, 0, 800, 600}});
    const struct {
        const char* name;
        QRectF frame;
        QPointF wanted;
    } rows[] = {
        {"inside", {100, 100, 200, 100}, {100, 100}},
        {"over the left edge", {-50, 100, 200, 100}, {0, 100}},
        {"over the top of the second", {2000, 550, 200, 100}, {2000, 500}},
        {"on both, so on the first", {1900, 500, 200, 100}, {1720, 500}},
        {"on a screen that is gone", {5000, 900, 200, 100}, {1720, 900}},
        {"wider than the screen", {300, 100, 3000, 100}, {0, 100}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(clampToScreen(row.frame, screens), row.wanted) << row.name;
    EXPECT_EQ(clampToScreen({-50, 7, 10, 10}, {}), QPointF(-50, 7)) << "no screen";
}

TEST(PanelLayout, CompanionsStandAboveAndElseBelow) {
    const QList<Screen> screens = screensOf({fullHd});
    const QSizeF size = closeConfirmationPanelSize;
    EXPECT_EQ(companionOrigin({702.5, 76}, closeConfirmationOffset, size, screens), QPointF(814, 182));
    EXPECT_EQ(companionOrigin({702.5, 1000}, closeConfirmationOffset, size, screens), QPointF(814, 1000 - 30 - 116))
        << "no room above";
    EXPECT_EQ(companionOrigin({-400, 76}, closeConfirmationOffset, size, screens), QPointF(0, 182)) << "half off";
    EXPECT_EQ(companionOrigin({702.5, 1000}, closeConfirmationOffset, size, {}), QPointF(814, 1106)) << "no screen";
}

TEST(PanelLayout, SettingsAndNoticeFitOnEveryScreen) {
    const QRectF screens[] = {fullHd, {0, 0, 1366, 728}, {0, 0, 1280, 720}, {0, 0, 1024, 560}, {0, 0, 800, 600}};
    for (const QRectF& usable : screens)
        for (const double share : {0.0, 0.3, 0.6, 1.0}) {
            SCOPED_TRACE(::testing::Message() << usable.width() << "x" << usable.height() << " at " << share);
            const QPointF control(usable.x(), usable.top() + share * (usable.height() - controlPanelSize.height()));
            const QList<Screen> all = screensOf({usable});
            const QRectF settings = settingsFrame(control, all);
            EXPECT_TRUE(usable.contains(settings));
            EXPECT_EQ(settings.width(), 288);
            EXPECT_GE(settings.height(), 280);
            const bool hasRoom = std::max(control.y(), usable.bottom() - control.y() - 76) > 400;
            EXPECT_FALSE(hasRoom && settings.intersects({control, controlPanelSize}));
            const QRectF notice({noticeOrigin(control, {settings, false}, all), noticePanelSize});
            EXPECT_TRUE(usable.contains(notice));
            EXPECT_FALSE(hasRoom && notice.intersects(settings)) << notice.y() << " " << settings.y();
        }
    const QList<Screen> large = screensOf({fullHd});
    EXPECT_EQ(settingsFrame({702.5, 76}, large), QRectF(917.5, 160, 288, 780));
    EXPECT_EQ(settingsFrame({702.5, 76}, {}), QRectF(917.5, 160, 288, 780));
}

TEST(PanelLayout, TheNoticeStandsAboveWhateverElseStandsThere) {
    const QList<Screen> screens = screensOf({fullHd});
    const QPointF control(702.5, 76);
    EXPECT_EQ(noticeOrigin(control, {}, screens) - control, QPointF(47.5, 84));
    EXPECT_EQ(noticeOrigin(control, {std::nullopt, true}, screens) - control, QPointF(47.5, 120));
    EXPECT_EQ(noticeOrigin(control, {settingsFrame(control, screens), true}, screens) - control, QPointF(149, 872));
}

TEST(PanelLayout, TheBubbleIsAtTheTopOfItsPanel) {
    EXPECT_EQ(webcamPanelSize(CameraOverlaySize::large, 288), QSizeF(292, 340));
    EXPECT_EQ(webcamPanelSize(CameraOverlaySize::small, 50), QSizeF(241, 102));
    EXPECT_EQ(bubbleFrame({100, 50, 292, 340}, CameraOverlaySize::large), QRectF(126, 148, 240, 240));
    EXPECT_EQ(bubbleFrame({100, 50, 241, 280}, CameraOverlaySize::small), QRectF(130.5, 148, 180, 180));
}

} // namespace
} // namespace keldra
