#include "app/AppWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using enum RecordingState;
using test::AppWorld;
namespace keys = preferenceKeys;

class AppModelRecording : public AppWorld {
protected:
    /// Brings a new model with a selection into that state, by the user's own roads.
    void makeModelIn(RecordingState state) {
        static const char* const stories[] = {
            "pick",         "askForScreen holdAll | record", "holdCountdown record", "record",
            "record press", "refuseStart record allowStart"};
        perform(stories[int(state)]);
        EXPECT_EQ(model->recordingState(), state);
    }
};

TEST_F(AppModelRecording, WithoutASelectionTheButtonAsksForOne) {
    makeModel().setIsSettingsPresented(true);
    press();
    EXPECT_TRUE(model->isSelectionRequiredPresented());
    EXPECT_FALSE(model->isSettingsPresented());
}

TEST_F(AppModelRecording, TellsTheRecorderWhatWasChosenUntilTheCountdownsEnd) {
    perform("microphone holdCountdown record");
    model->setClickSoundEnabled(true);
    model->setClickSoundStyle(ClickSoundStyle::classic);
    model->selectMicrophoneDevice("mic-a");
    model->setRecordingQuality(RecordingQuality::low);
    model->updateRegionSelection(QRectF(1, 2, 3, 4));
    releaseAll();

    ASSERT_EQ(recorder.starts.size(), 1U);
    const RecordingRequest& request = recorder.starts.front();
    EXPECT_EQ(request.selection, wholeDisplay) << "of the press";
    EXPECT_TRUE(request.microphoneEnabled);
    EXPECT_EQ(request.microphoneDeviceID, "mic-a");
    EXPECT_EQ(request.quality, RecordingQuality::high) << "cannot be changed during the countdown";
    EXPECT_TRUE(request.clickSoundEnabled);
    EXPECT_EQ(request.clickSoundStyle, ClickSoundStyle::classic);
    EXPECT_EQ(request.outputDirectory, folder.path());
    EXPECT_EQ(request.now, analytics.now);
    EXPECT_EQ(request.cameraService, cameraService);
    EXPECT_EQ(request.cameraOverlayState, model->cameraOverlayState());
    EXPECT_EQ(request.pointerEffectsMonitor, pointerMonitor);
    EXPECT_TRUE(request.offersMicrophone) << "so that it can be switched on later";
}

TEST_F(AppModelRecording, CountsSecondsAndReports) {
    telemetry.setEnabled(true);
    makeRecording();
    time.advance(2999ms);
    EXPECT_EQ(model->elapsedSeconds(), 2);
    time.advance(28001ms);
    EXPECT_EQ(model->elapsedSeconds(), 31);
    press();
    time.advance(5s);
    EXPECT_EQ(model->elapsedSeconds(), 31) << "stands still while stopping";
    finish(take);
    EXPECT_TRUE(model->lastRecordingHasLiveClickTrack());
    EXPECT_EQ(telemetrySent(), (QStringList{"recording_started", "recording_finished"}));
    EXPECT_EQ(analytics.sentEvents().last()["props"].toObject()["duration"].toString(), "30s_to_2m");

    model->setCurrentSelection(wholeDisplay);
    press();
    time.advance(1s);
    finish(keldra::fail(diskFull));
    time.advance(5s);
    EXPECT_EQ(model->elapsedSeconds(), 1) << "counts anew, and a failure keeps the count";
    EXPECT_EQ(telemetrySent().size(), 3) << "and is not reported";
}

TEST_F(AppModelRecording, AFailureChangesNothingElse) {
    perform("camera microphone record askForScreen fail");
    EXPECT_TRUE(model->cameraEnabled());
    EXPECT_TRUE(model->microphoneEnabled());
    EXPECT_TRUE(model->hasScreenPermission());
    EXPECT_EQ(model->currentSelection(), wholeDisplay);
    time.advance(6s);
    EXPECT_EQ(model->notice(), std::nullopt);
    EXPECT_EQ(model->errorMessage(), "No space left on device") << "stays, unlike its notice";
}

TEST_F(AppModelRecording, AResultFromAnotherThreadsQueueIsHandledOnMain) {
    makeRecording();
    time.queue("capture").post([&] {
        recorder.finish(take);
        EXPECT_EQ(model->recordingState(), recording) << "not here";
    });
    time.settle();
    EXPECT_EQ(model->recordingState(), idle);
}

struct StateRow {
    const char* name;
    RecordingState state;
    bool settingsAllowed;
    /// Asks before it quits.
    bool quitAsks;
};

class AppModelStates : public AppModelRecording, public ::testing::WithParamInterface<StateRow> {};

TEST_P(AppModelStates, DecideWhatIsAllowed) {
    const auto [name, state, settingsAllowed, quitAsks] = GetParam();
    makeModelIn(state);
    EXPECT_EQ(model->canChangeSettings(), settingsAllowed);

    model->setRecordingQuality(RecordingQuality::low);
    EXPECT_EQ(model->recordingQuality(), settingsAllowed ? RecordingQuality::low : RecordingQuality::high);
    EXPECT_EQ(preferences.value(keys::recordingQuality), model->recordingQuality());
    model->chooseOutputDirectory();
    time.advance(1s);
    EXPECT_EQ(dialogs->shown.size(), settingsAllowed ? 1 : 0);

    for (const bool isOn : {true, false}) {
        toggleCamera();
        toggleMicrophone();
        EXPECT_EQ(model->cameraEnabled(), isOn);
        EXPECT_EQ(model->microphoneEnabled(), isOn);
    }
    EXPECT_EQ(recorder.switches, state == recording ? (std::vector<bool>{true, false}) : std::vector<bool>());

    model->setIsSettingsPresented(true);
    model->requestQuit();
    EXPECT_EQ(model->isCloseConfirmationPresented(), quitAsks);
    EXPECT_EQ(model->isSettingsPresented(), !quitAsks);
    // A file that is being finished is waited for.
    const bool quitWaits = quitAsks || state == stopping;
    EXPECT_EQ(analytics.application.terminations, quitWaits ? 0 : 1);
    EXPECT_EQ(model->recordingState(), state);

    model->setIsCloseConfirmationPresented(true);
    model->confirmQuit();
    EXPECT_FALSE(model->isCloseConfirmationPresented());
    EXPECT_EQ(analytics.application.terminations, quitWaits ? 0 : 2);
}

INSTANTIATE_TEST_SUITE_P(Rows, AppModelStates,
                         ::testing::Values(StateRow{"idle", idle, true, false},
                                           StateRow{"requestingPermission", requestingPermission, false, false},
                                           StateRow{"countdown", countdown, false, false},
                                           StateRow{"recording", recording, false, true},
                                           StateRow{"stopping", stopping, false, false},
                                           StateRow{"failed", failed, true, false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppModelRecording, QuittingFinishesTheFileFirst) {
    for (const Result<RecordingOutput>& result :
         {Result<RecordingOutput>(take), Result<RecordingOutput>(keldra::fail(diskFull))}) {
        analytics.application.terminations = 0;
        makeRecording();
        model->requestQuit();
        model->confirmQuit();
        EXPECT_EQ(model->recordingState(), stopping);
        time.advance(1min);
        EXPECT_EQ(analytics.application.terminations, 0);
        finish(result);
        EXPECT_EQ(analytics.application.terminations, 1) << "saved or not";
    }
}

TEST_F(AppModelRecording, TheLastRecordingIsRevealedAndEdited) {
    makeModel().revealLastRecording();
    EXPECT_TRUE(workspace->revealed.isEmpty()) << "there is none";
    perform("edit camera record press save");
    model->revealLastRecording();
    EXPECT_EQ(workspace->revealed, QList<QUrl>{take.url});

    model->openLastRecordingInEditor();
    EXPECT_EQ(model->lastSavedURL(), QUrl());
    EXPECT_FALSE(model->lastRecordingHasLiveClickTrack());
    EXPECT_FALSE(model->cameraEnabled());
    EXPECT_TRUE(edited.isEmpty()) << "the camera stops first";
    time.settle();
    EXPECT_FALSE(camera->isRunning);
    EXPECT_EQ(edited, (QList<std::pair<QUrl, bool>>{{take.url, true}}));
    model->openLastRecordingInEditor();
    time.settle();
    EXPECT_EQ(edited.size(), 1);
}

} // namespace
} // namespace keldra
