#include "app/AppWorld.h"
#include "capture_ui/ElapsedText.h"
#include "capture_ui/RecorderPanels.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::AppWorld;

class ViewModels : public AppWorld {
protected:
    RecorderViewModels& views() {
        if (!m_views)
            m_views = std::make_unique<RecorderViewModels>(*model, time.scheduler(), workspace);
        return *m_views;
    }
    ~ViewModels() override { m_views.reset(); }

private:
    std::unique_ptr<RecorderViewModels> m_views;
};

TEST(ElapsedText, HasTwoDigitsEach) {
    const std::pair<int, const char*> rows[] = {{0, "00:00:00"},      {59, "00:00:59"},      {3661, "01:01:01"},
                                                {359999, "99:59:59"}, {360000, "100:00:00"}, {-1, "00:00:00"}};
    for (const auto& [seconds, wanted] : rows)
        EXPECT_EQ(elapsedText(seconds), wanted);
}

TEST_F(ViewModels, TheControlPanelFollowsTheState) {
    const struct {
        const char* story;
        RecordingState state;
        const char* label;
        bool isEnabled;
        bool isReady;
        bool areModesLive;
        int activeMode;
    } rows[] = {
        {"", RecordingState::idle, "Start recording", true, false, true, -1},
        {"pick", RecordingState::idle, "Start recording", true, true, true, -1},
        {"askForScreen holdAll | pick press", RecordingState::requestingPermission, "Start recording", false, false,
         true, -1},
        {"holdCountdown record", RecordingState::countdown, "Start recording", false, false, false, -1},
        {"record", RecordingState::recording, "Stop recording", true, false, false, -1},
        {"record stop", RecordingState::stopping, "Start recording", false, false, false, -1},
        {"record stop fail", RecordingState::failed, "Start recording", true, true, true, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.story);
        perform(row.story);
        const ControlPanelModel control(*model);
        EXPECT_EQ(model->recordingState(), row.state);
        EXPECT_EQ(control.recordLabel(), row.label);
        EXPECT_EQ(control.isRecordEnabled(), row.isEnabled);
        EXPECT_EQ(control.isReady(), row.isReady);
        EXPECT_EQ(control.areModesLive(), row.areModesLive);
        EXPECT_EQ(control.activeMode(), row.activeMode);
        releaseAll();
    }
}

TEST_F(ViewModels, WhatIsDimmedDoesNothing) {
    perform("record");
    ControlPanelModel& control = views().control;
    control.chooseMode(static_cast<int>(CaptureMode::display));
    time.settle();
    EXPECT_EQ(selectionsAsked.size(), 0);
    control.toggleMicrophone();
    time.settle();
    EXPECT_TRUE(control.isMicrophoneOn());
    EXPECT_EQ(control.microphoneSymbol(), "mic");
    control.record();
    time.settle();
    EXPECT_EQ(model->recordingState(), RecordingState::stopping);
    control.record();
    time.settle();
    EXPECT_EQ(recorder.stops, 1);
    views().settings.setCountdown(0);
    views().settings.setQuality(2);
    EXPECT_EQ(views().settings.countdown(), 1);
    EXPECT_EQ(views().settings.quality(), 0);
}

TEST_F(ViewModels, SettingsShowAndStore) {
    preferences.setValue(preferenceKeys::cursorHighlightSize, 200);
    makeModel();
    SettingsPanelModel& settings = views().settings;
    EXPECT_EQ(settings.clickIntensity(), (SliderValue{1, 0.5, 2, 0.05, "100%"}));
    EXPECT_EQ(settings.highlightIntensity(), (SliderValue{0.65, 0.2, 1, 0.02, "65%"}));
    EXPECT_EQ(settings.highlightSize(), (SliderValue{200, 32, 80, 2, "200"})) << "as stored";
    settings.setCountdown(2);
    settings.setQuality(1);
    settings.setClickSoundStyle(1);
    settings.setClickIntensity(1.26);
    EXPECT_EQ(model->countdownDuration(), CountdownDuration::ten);
    EXPECT_EQ(model->recordingQuality(), RecordingQuality::medium);
    EXPECT_EQ(model->clickSoundStyle(), ClickSoundStyle::classic);
    EXPECT_EQ(settings.clickIntensity().text, "126%");
    EXPECT_EQ(settings.countdown(), 2);

    EXPECT_EQ(settings.cameras(), (DeviceChoice{{"cam-a", "cam-b"}, {"A", "B"}, 0}));
    settings.selectCamera("cam-b");
    EXPECT_EQ(settings.cameras().index, 1);
    devices->connect(devices->cameras, {});
    time.settle();
    EXPECT_EQ(settings.cameras(), DeviceChoice{});
    settings.selectCamera("cam-b");
    EXPECT_EQ(model->selectedCameraDeviceID(), "") << "from a menu that has emptied meanwhile";
    EXPECT_EQ(folderName("/home/me/Videos/"), "Videos");
    EXPECT_EQ(folderName("/"), "/");
}

TEST_F(ViewModels, NoticesOfferWhatHelps) {
    makeModel();
    NoticeModel& notice = views().notice;
    const struct {
        const char* message;
        const char* action;
        bool hasPages;
    } rows[] = {
        {"Screen recording access was not granted", "Open Settings", true},
        {"Microphone access was not granted.", "", false},
        {"The disk is full.", "", true},
    };
    for (const auto& row : rows) {
        workspace->hasPages = row.hasPages;
        model->setErrorMessage(row.message);
        time.settle();
        EXPECT_EQ(notice.message(), row.message);
        EXPECT_EQ(notice.symbol(), "exclamationmark.triangle.fill");
        EXPECT_EQ(notice.actionLabel(), row.action) << row.message;
    }
    notice.dismiss();
    EXPECT_EQ(notice.message(), "The disk is full.") << "readable while its panel leaves";
    model->chooseOutputDirectory();
    dialogs->choice = std::optional(QUrl("file:///tmp"));
    time.advance(100ms);
    EXPECT_EQ(notice.kind(), "info");
    EXPECT_EQ(notice.symbol(), "info.circle.fill");
}

TEST_F(ViewModels, PicturesOfTheCameraAreToldOnceEach) {
    makeModel();
    CameraPreviewFeed& feed = *views().webcam.feed();
    int told = 0;
    QObject::connect(&feed, &CameraPreviewFeed::pictureChanged, [&] { ++told; });
    const auto deliver = [this] {
        camera->deliver(PixelBuffer::allocate(PixelFormat::bgra, 4, 4));
        time.advance(100ms);
    };
    toggleCamera();
    deliver();
    EXPECT_EQ(told, 0) << "nobody watches";
    feed.setIsWatched(true);
    time.advance(1s);
    EXPECT_EQ(told, 1);
    deliver();
    EXPECT_EQ(told, 2);
    toggleCamera();
    EXPECT_EQ(told, 3);
    EXPECT_FALSE(feed.picture());
    toggleCamera();
    deliver();
    EXPECT_EQ(told, 4);
}

} // namespace
} // namespace keldra
