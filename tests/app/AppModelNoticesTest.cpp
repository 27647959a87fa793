#include "app/AppWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::AppWorld;

struct ActionRow {
    const char* text;
    std::optional<AppNotice::Action> wanted;
};

TEST(NoticeActionTest, FollowsTheWords) {
    const ActionRow rows[] = {
        {"", {}},
        {"Could not enable the camera.", {}},
        {"Camera access was not granted.", SettingsPage::camera},
        {"Screen recording access was not granted", SettingsPage::screenCapture},
        {"NO PERMISSION FOR THE SCREEN", SettingsPage::screenCapture},
        {"permission: screen, microphone", SettingsPage::microphone},
        {"permission: screen, microphone, camera", SettingsPage::camera},
        {"The folder is not accessible.", {}},
        {"The camera's file is not accessible.", SettingsPage::camera},
    };
    for (const auto& [text, wanted] : rows)
        EXPECT_EQ(noticeAction(text), wanted) << text;
}

class AppModelNotices : public AppWorld {
protected:
    void say(const QString& message) {
        model->setErrorMessage(message);
        time.settle();
    }
};

TEST_F(AppModelNotices, EachNewErrorIsTold) {
    makeModel();
    say("");
    say("a");
    say("a");
    say("b");
    say("");
    say("b");
    EXPECT_EQ(notices, (QStringList{"a", "b", "b"}));
    EXPECT_EQ(model->notice()->kind, AppNotice::Kind::error);
}

TEST_F(AppModelNotices, AnErrorThatIsClearedAtOnceIsToldAllTheSame) {
    makeModel().setErrorMessage("a");
    EXPECT_EQ(model->notice(), std::nullopt) << "a turn later";
    say("");
    EXPECT_EQ(notices, QStringList{"a"});
}

TEST_F(AppModelNotices, EachLivesForItsOwnTime) {
    makeModel();
    say("a");
    time.advance(3s);
    say("b");
    const QUuid second = model->notice()->id;
    time.advance(5999ms);
    ASSERT_TRUE(model->notice());
    EXPECT_EQ(model->notice()->message, "b");
    time.advance(1ms);
    EXPECT_FALSE(model->notice());
    EXPECT_EQ(model->errorMessage(), "b");

    say("c");
    time.advance(1s);
    model->dismissNotice();
    EXPECT_FALSE(model->notice());
    say("d");
    EXPECT_NE(model->notice()->id, second);
    time.advance(5500ms);
    EXPECT_TRUE(model->notice()) << "a dismissed one takes its time with it";

    model->showNotice(AppNotice::Kind::info, "e", AppNotice::RevealFile{QUrl("file:///kept.mov")});
    time.advance(1h);
    ASSERT_TRUE(model->notice()) << "a file is offered until somebody has seen it";
    EXPECT_EQ(model->notice()->message, "e");
}

TEST_F(AppModelNotices, TheActionIsCarriedOutAndTheNoticeGoes) {
    makeModel().performNoticeAction();
    say("Camera access was not granted.");
    model->performNoticeAction();
    EXPECT_FALSE(model->notice());
    say("Could not do it.");
    model->performNoticeAction();
    EXPECT_FALSE(model->notice()) << "without an action too";
    EXPECT_EQ(workspace->opened, QList<SettingsPage>{SettingsPage::camera});
}

TEST_F(AppModelNotices, ASavedRecordingEndsTheNoticeOfItsTroubles) {
    perform("record say press save");
    EXPECT_FALSE(model->notice());
}

} // namespace
} // namespace keldra
