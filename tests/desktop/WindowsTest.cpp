#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "capture_ui/StatusItemController.h"
#include "doubles/Waiting.h"
#include "launch/QuitEvents.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtEventMonitor.h"

#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QWindow>

#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::Answer;
using test::runUntil;

/// Counts what reaches it.
class CountingWindow : public QWindow {
public:
    int keys = 0;
    int clicks = 0;

protected:
    void keyPressEvent(QKeyEvent*) override { ++keys; }
    void mouseReleaseEvent(QMouseEvent*) override { ++clicks; }
};

class QtEventMonitorTest : public ::testing::Test {
protected:
    QtEventMonitorTest() { window.setProperty(windowIdentifierProperty, "panel"); }
    void pressKey() {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_O, Qt::ControlModifier, "o");
        QCoreApplication::sendEvent(&window, &event);
    }
    void releaseButton(Qt::MouseButton button) {
        QMouseEvent event(QEvent::MouseButtonRelease, QPointF(), QPointF(), button, Qt::NoButton, {});
        QCoreApplication::sendEvent(&window, &event);
    }

    QtEventMonitor monitor;
    CountingWindow window;
    QList<WindowEvent> seen;
};

TEST_F(QtEventMonitorTest, TellsWhatHappensInWhichWindow) {
    const auto clicks = monitor.watch(WindowEvent::Kind::mouseUp, [this](const WindowEvent& event) {
        seen.append(event);
        return false;
    });
    releaseButton(Qt::LeftButton);
    releaseButton(Qt::MiddleButton);
    pressKey();
    EXPECT_EQ(seen, QList<WindowEvent>(2, {WindowEvent::Kind::mouseUp, "panel", 0, {}}));
    const auto keys = monitor.watch(WindowEvent::Kind::keyDown, [this](const WindowEvent& event) {
        seen.append(event);
        return false;
    });
    pressKey();
    EXPECT_EQ(seen.last(), (WindowEvent{WindowEvent::Kind::keyDown, "panel", Qt::Key_O, Qt::ControlModifier}));
    EXPECT_EQ(window.keys, 2);
    EXPECT_EQ(window.clicks, 2);
}

TEST_F(QtEventMonitorTest, EndsAnEventThatAHandlerTakesAndTheWatchWithItsHandle) {
    int asked = 0;
    EventMonitor::Watch first = monitor.watch(WindowEvent::Kind::keyDown, [&](const WindowEvent&) {
        ++asked;
        // It may end itself, and begin another.
        first.reset();
        return true;
    });
    const auto second = monitor.watch(WindowEvent::Kind::keyDown, [&](const WindowEvent&) { return ++asked, false; });
    pressKey();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(window.keys, 0);
    pressKey();
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(window.keys, 1);
}

class QtDialogsTest : public ::testing::Test {
protected:
    /// The dialog, once it is there.
    static QFileDialog* shown() {
        QFileDialog* dialog = nullptr;
        const auto isThere = [&] {
            for (QWidget* window : QApplication::topLevelWidgets())
                if (window->isVisible())
                    dialog = qobject_cast<QFileDialog*>(window);
            return dialog != nullptr;
        };
        return runUntil(isThere) ? dialog : nullptr;
    }

    std::shared_ptr<MainScheduler> scheduler = std::make_shared<MainScheduler>();
    MainQueue mainQueue{scheduler};
    QTemporaryDir folder;
    QtDialogs dialogs{mainQueue};
    Answer<Result<std::optional<QUrl>>> answer;
};

TEST_F(QtDialogsTest, AFolderIsChosen) {
    const QUrl url = QUrl::fromLocalFile(folder.path());
    dialogs.chooseFolder({"Recording folder", "Select", url}, answer.taker());
    QFileDialog* dialog = shown();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Recording folder");
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), "Select");
    EXPECT_EQ(dialog->directory().absolutePath(), folder.path());
    static_cast<QDialog*>(dialog)->accept();
    ASSERT_TRUE(answer.wait());
    EXPECT_EQ(answer.value->value_or(std::nullopt), url);
}

TEST_F(QtDialogsTest, OneIsOpenAtATime) {
    dialogs.chooseFile({"Choose a video to edit", "Open", {"video/mp4", "video/quicktime"}}, answer.taker());
    Answer<Result<std::optional<QUrl>>> second, third;
    dialogs.chooseFile({"Another", "Open", {}}, second.taker());
    ASSERT_TRUE(second.wait());
    EXPECT_EQ(second.value->value_or(QUrl("not:nothing")), std::nullopt);

    QFileDialog* dialog = shown();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Choose a video to edit");
    EXPECT_TRUE(dialog->nameFilters().value(0).contains("*.mp4"));
    EXPECT_TRUE(dialog->nameFilters().value(0).contains("*.mov"));
    dialog->reject();
    ASSERT_TRUE(answer.wait());
    EXPECT_EQ(answer.value->value_or(QUrl("not:nothing")), std::nullopt);
    dialogs.chooseFile({"Third", "Open", {"video/*"}}, third.taker());
    dialog = shown();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->windowTitle(), "Third");
    EXPECT_TRUE(dialog->nameFilters().value(0).contains("*.webm"));
}

TEST(QuitEventsTest, HearOfTheDesktopsWishInsteadOfTheApplication) {
    int asked = 0;
    bool hasEnded = false;
    QObject context;
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &context, [&] { hasEnded = true; });
    QuitEvents events([&] { ++asked; });
    QWindow window;
    window.show();
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &quit);
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(window.isVisible());
    EXPECT_FALSE(hasEnded);
}

TEST(StatusItemControllerTest, HasAMenuWhoseTitleIsFresh) {
    bool isVisible = true;
    QStringList chosen;
    StatusItemController item({[&] { return isVisible; }, [&] { chosen.append("visibility"); },
                               [&] { chosen.append("settings"); }, [&] { chosen.append("quit"); }});
    QMenu& menu = item.menu();
    const auto titles = [&] {
        Q_EMIT menu.aboutToShow();
        QStringList texts;
        for (const QAction* action : menu.actions())
            texts.append(action->isSeparator() ? "-" : action->text());
        return texts;
    };
    EXPECT_EQ(titles(), (QStringList{"Hide App", "Settings", "-", "Quit App"}));
    isVisible = false;
    EXPECT_EQ(titles().first(), "Show App");
    for (QAction* action : menu.actions())
        action->trigger();
    EXPECT_EQ(chosen, (QStringList{"visibility", "settings", "quit"}));
}

} // namespace
} // namespace keldra
