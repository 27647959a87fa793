#include "ui_kit/FloatingPanel.h"

#include "doubles/Waiting.h"

#include <QGuiApplication>
#include <QQuickView>
#include <QScreen>

#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::runUntil;

/// A panel that shows one of our own views.
PanelConfiguration configuration(const QString& identifier) {
    PanelConfiguration made;
    made.identifier = identifier;
    made.title = identifier;
    made.view = QUrl("qrc:/qt/qml/Keldra/UiKit/HintView.qml");
    made.properties = {{"text", "A panel"}};
    return made;
}

OwnWindow rowOf(const OwnWindows& windows, const QString& identifier) {
    for (const OwnWindow& each : windows.windows())
        if (each.identifier == identifier)
            return each;
    return {};
}

TEST(FloatingPanel, StandsWhereItIsPutAndTellsWhenItIsMoved) {
    const auto windows = std::make_shared<OwnWindows>();
    UiKit kit(windows);
    FloatingPanel panel(configuration("one"), kit);
    int moves = 0;
    QObject::connect(&panel, &Panel::moved, [&] { ++moves; });
    const double top = QGuiApplication::primaryScreen()->geometry().height();
    panel.setContentSize({200, 100});
    panel.setOrigin({30.5, 40});
    EXPECT_EQ(panel.frame(), QRectF(30.5, 40, 200, 100));
    EXPECT_EQ(panel.window().geometry().y(), top - 140);
    panel.orderFront();
    EXPECT_EQ(panel.frame(), QRectF(30.5, 40, 200, 100)) << "as it was asked for";
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(rowOf(*windows, "one").isVisible);
    EXPECT_EQ(rowOf(*windows, "one").frame.size(), QSizeF(200, 100));
    moves = 0;
    panel.setOrigin({30.5, 40});
    EXPECT_EQ(moves, 0) << "it stands there already";
    panel.setContentSize({200, 120});
    EXPECT_EQ(panel.frame(), QRectF(30.5, 40, 200, 120)) << "the lower left corner stays";
    // Whoever moves it before it is seen is the window manager, and is asked to think again.
    ASSERT_TRUE(runUntil([&] { return panel.window().isExposed(); }));
    panel.window().setPosition(300, 50);
    EXPECT_TRUE(runUntil([&] { return panel.frame() == QRectF(300, top - 170, 200, 120); }));
    EXPECT_GT(moves, 0);
    panel.window().close();
    EXPECT_TRUE(panel.isVisible()) << "only its owner takes it away";
    panel.orderOut();
    EXPECT_FALSE(panel.isVisible());
    EXPECT_FALSE(rowOf(*windows, "one").isVisible);
}

TEST(FloatingPanel, KeepsOffWhereRecordingsSeeEverything) {
    const auto windows = std::make_shared<OwnWindows>();
    for (const bool recordingsSeeAllWindows : {false, true})
        for (const bool mayBeRecorded : {false, true}) {
            UiKit kit(windows, recordingsSeeAllWindows);
            PanelConfiguration made = configuration("two");
            made.mayBeRecorded = mayBeRecorded;
            FloatingPanel panel(made, kit);
            panel.setContentSize({200, 100});
            panel.orderFront();
            EXPECT_TRUE(panel.isVisible());
            panel.setSharingType(SharingType::none);
            EXPECT_EQ(rowOf(*windows, "two").sharingType, SharingType::none);
            const bool isSeen = !recordingsSeeAllWindows || mayBeRecorded;
            EXPECT_EQ(panel.isVisible(), isSeen);
            EXPECT_EQ(panel.window().isVisible(), isSeen);
            panel.orderFront();
            EXPECT_EQ(panel.window().isVisible(), isSeen);
            panel.setSharingType(SharingType::readOnly);
            EXPECT_TRUE(panel.window().isVisible()) << "it comes back";
            panel.orderOut();
            panel.setSharingType(SharingType::none);
            panel.setSharingType(SharingType::readOnly);
            EXPECT_FALSE(panel.window().isVisible()) << "nobody wants it back";
        }
}

} // namespace
} // namespace keldra
