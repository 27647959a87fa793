#include "launch/LaunchWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::LaunchWorld;
using enum RecordingState;

using AppDelegateTest = LaunchWorld;

TEST_F(AppDelegateTest, StartsTheRecorder) {
    launch();
    EXPECT_EQ(told(), "show");
    EXPECT_EQ(applications->log, QStringList{"claim"});
    EXPECT_TRUE(statusItem);
    EXPECT_EQ(notices, QStringList());
    EXPECT_EQ(sleepInhibitor->holds, 0);
}

TEST_F(AppDelegateTest, LeavesTheFieldToACopyThatRecords) {
    launch({}, {{{"other", 7, false}, {"records"}}});
    EXPECT_EQ(terminations(), 1);
    EXPECT_EQ(told(), "");
    EXPECT_FALSE(statusItem);
    EXPECT_EQ(telemetrySent(), QStringList());
}

TEST_F(AppDelegateTest, TellsOfItsLaunchWithConsentOnly) {
    launch();
    EXPECT_EQ(telemetrySent(), QStringList());
    EXPECT_TRUE(analytics.session.requests.empty());
    preferences.setValue(preferenceKeys::analyticsEnabled, true);
    launch();
    EXPECT_EQ(telemetrySent(), QStringList{"app_launched"});
}

TEST_F(AppDelegateTest, TellsWhatTheUserShouldKnowOneAfterTheOther) {
    limitations = QStringList{"no recording here"};
    kept = QUrl("file:///kept.mov");
    launch();
    EXPECT_EQ(notices, QStringList{"no recording here"});
    time.advance(4s);
    ASSERT_EQ(notices.size(), 2);
    model->performNoticeAction();
    EXPECT_EQ(workspace->revealed, QList<QUrl>{*kept});
}

/// The tray item's menu, in words; a recording is told by its own words.
struct MenuRow {
    const char* name;
    const char* story;
    const char* wanted;
};

void PrintTo(const MenuRow& row, std::ostream* out) {
    *out << row.name;
}

class StatusItemMenu : public LaunchWorld, public ::testing::WithParamInterface<MenuRow> {};

/// What the windows were told; the menu's title for them; whether settings and the question are open; how often it
/// ended.
TEST_P(StatusItemMenu, Rules) {
    launch();
    told();
    for (const QString& word : QString(GetParam().story).split(' '))
        if (word == "toggle")
            statusItem->onToggleVisibility();
        else if (word == "settings")
            statusItem->onSettings();
        else if (word == "quit")
            statusItem->onQuit();
        else if (word == "activate")
            applications->requests.activate();
        else if (word == "record")
            go("record");
    if (!statusItem->isAppVisible())
        log.append("hidden");
    if (model->isSettingsPresented())
        log.append("settings");
    if (model->isCloseConfirmationPresented())
        log.append("asks");
    if (terminations() > 0)
        log.append("ends");
    EXPECT_EQ(told(), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(Rows, StatusItemMenu,
                         ::testing::Values(MenuRow{"hides", "toggle", "hide hidden"},
                                           MenuRow{"showsAgain", "toggle toggle", "hide show"},
                                           MenuRow{"settings", "settings", "settings"},
                                           MenuRow{"settingsOfHiddenPanels", "toggle settings", "hide show settings"},
                                           MenuRow{"quits", "quit", "ends"},
                                           MenuRow{"asksWhileRecording", "record quit", "asks"},
                                           MenuRow{"anotherStartShowsHiddenPanels", "toggle activate", "hide show"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppDelegateTest, HasAMenuBeforeTheRecorder) {
    applications = nullptr;
    launch({}, {{{"other", 7, false}, {"stuck"}}});
    EXPECT_FALSE(statusItem) << "not before the other copy has gone";
    time.advance(1min);
    ASSERT_TRUE(statusItem);
    EXPECT_TRUE(statusItem->isAppVisible());
}

TEST_F(AppDelegateTest, OpensAVideoWithAKeyInItsOwnWindowsOnly) {
    launch();
    told();
    EXPECT_TRUE(press(Qt::Key_O, Qt::ControlModifier));
    EXPECT_EQ(told(), "pick");
    EXPECT_FALSE(press(Qt::Key_O, Qt::ControlModifier, {})) << "a dialog of the desktop";
    EXPECT_FALSE(press(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_FALSE(press(Qt::Key_O, {}));
    EXPECT_FALSE(press(Qt::Key_P, Qt::ControlModifier));
    EXPECT_EQ(told(), "");
}

TEST_F(AppDelegateTest, ServesOtherStarts) {
    launch();
    told();
    applications->requests.openFile(QUrl("file:///b.mov"));
    applications->requests.openPicker();
    applications->requests.activate();
    EXPECT_EQ(told(), "edit:b.mov pick show");
    EXPECT_TRUE(applications->requests.makeWay());
    EXPECT_EQ(terminations(), 0) << "the answer goes first";
    time.settle();
    EXPECT_EQ(terminations(), 1);
}

/// How far a recording is when the desktop, a signal or another start ends the program.
struct EndRow {
    const char* name;
    const char* story;
    /// What lets the recording end, if anything must; empty when the program ends at once.
    const char* ending;
    bool staysForAnother;
};

void PrintTo(const EndRow& row, std::ostream* out) {
    *out << row.name;
}

class AgentEnd : public LaunchWorld, public ::testing::WithParamInterface<EndRow> {
protected:
    void begin() {
        launch();
        go(GetParam().story);
        told();
    }
    bool isAtOnce() const { return *GetParam().ending == '\0'; }
};

TEST_P(AgentEnd, LosesNothingAndShowsNothing) {
    begin();
    delegate->terminate();
    delegate->terminate();
    time.settle();
    if (!isAtOnce()) {
        EXPECT_EQ(terminations(), 0);
        EXPECT_EQ(told(), "hide");
        EXPECT_TRUE(statusItemLife.expired());
        applications->requests.activate();
        applications->requests.openPicker();
        applications->requests.openFile(QUrl("file:///a.mov"));
        EXPECT_TRUE(applications->requests.makeWay()) << "it is on its way already";
        EXPECT_EQ(told(), "");
        go(GetParam().ending);
        time.settle();
        EXPECT_EQ(recorder.stops, recorder.startError ? 0 : 1);
    }
    EXPECT_GE(terminations(), 1);
    EXPECT_EQ(sleepInhibitor->holds, 0);
}

TEST_P(AgentEnd, MakesWayUnlessItRecords) {
    begin();
    EXPECT_EQ(applications->requests.makeWay(), !GetParam().staysForAnother);
    time.settle();
    EXPECT_EQ(told(), GetParam().staysForAnother ? "show" : "");
    EXPECT_EQ(terminations(), GetParam().staysForAnother ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(Rows, AgentEnd,
                         ::testing::Values(EndRow{"idle", "", "", false}, EndRow{"failed", "record fail", "", false},
                                           EndRow{"saved", "record press save", "", false},
                                           EndRow{"countingDown", "holdCountdown record", "", true},
                                           EndRow{"starting", "holdStart record", "release save", true},
                                           EndRow{"startingInVain", "refuseStart holdStart record", "release", true},
                                           EndRow{"recording", "record", "save", true},
                                           EndRow{"recordingAndFailing", "record", "fail", true},
                                           EndRow{"finishing", "record press", "save", true}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppDelegateTest, KeepsTheMachineAwakeWhileItRecordsAndFinishes) {
    launch();
    go("holdCountdown record");
    EXPECT_EQ(sleepInhibitor->holds, 0);
    go("release");
    EXPECT_EQ(sleepInhibitor->holds, 1);
    go("press");
    EXPECT_EQ(sleepInhibitor->holds, 1);
    go("save");
    EXPECT_EQ(sleepInhibitor->holds, 0);
}

} // namespace
} // namespace keldra
