#include "app/AppWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using enum RecordingState;
using testing::AppWorld;
namespace keys = preferenceKeys;

class AppModelRecording : public AppWorld {
protected:
    /// Brings a new model with a selection into that state, by the user's own roads.
    AppModel& makeModelIn(RecordingState state) {
        if (state == requestingPermission) {
            permissions->isGranted = false;
            permissions->answers.holds = true;
        }
        countdowns.holds = state == countdown;
        if (state == failed)
            recorder.startError = diskFull;
        makeModel().setCurrentSelection(wholeDisplay);
        if (state != idle)
            press();
        if (state == stopping)
            press();
        EXPECT_EQ(model->recordingState(), state);
        recorder.startError.reset();
        return *model;
    }
};

TEST_F(AppModelRecording, WithoutASelectionTheButtonAsksForOne) {
    makeModel().setIsSettingsPresented(true);
    press();
    EXPECT_TRUE(model->isSelectionRequiredPresented());
    EXPECT_FALSE(model->isSettingsPresented());
    EXPECT_EQ(model->recordingState(), idle);
}

TEST_F(AppModelRecording, TellsTheRecorderWhatWasChosenUntilTheCountdownsEnd) {
    countdowns.holds = true;
    makeModel().setCurrentSelection(wholeDisplay);
    toggleMicrophone();
    press();
    model->setClickSoundEnabled(true);
    model->setClickSoundStyle(ClickSoundStyle::classic);
    model->selectMicrophoneDevice("mic-a");
    model->setRecordingQuality(RecordingQuality::low);
    model->updateRegionSelection(QRectF(1, 2, 3, 4));
    countdowns.releaseAll();
    time.settle();

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
    EXPECT_EQ(model->elapsedSeconds(), 31);
    EXPECT_TRUE(model->lastRecordingHasLiveClickTrack());
    EXPECT_EQ(telemetrySent(), (QStringList{"recording_started", "recording_finished"}));
    EXPECT_EQ(analytics.sentEvents().last()["props"].toObject()["duration"].toString(), "30s_to_2m");

    model->setCurrentSelection(wholeDisplay);
    press();
    EXPECT_EQ(model->elapsedSeconds(), 0);
    time.advance(1s);
    finish(keldra::fail(diskFull));
    time.advance(5s);
    EXPECT_EQ(model->elapsedSeconds(), 1) << "a failure keeps the count";
    EXPECT_EQ(telemetrySent().size(), 3) << "and is not reported";
}

TEST_F(AppModelRecording, ASuccessLooksAtPermissionAndDisplaysAgain) {
    makeRecording();
    permissions->isGranted = false;
    screens->current = {{2, "Side", QRectF(0, 0, 800, 600), {}, 1}};
    EXPECT_EQ(model->selectedDisplayID(), 1U) << "nobody looks while recording";
    press();
    finish(take);
    EXPECT_FALSE(model->hasScreenPermission());
    EXPECT_EQ(model->displays(), (QList<CaptureDisplay>{{2, "Side", "800 x 600"}}));
    EXPECT_EQ(model->selectedDisplayID(), 2U);
}

TEST_F(AppModelRecording, AFailureChangesNothingElse) {
    makeModel().setCurrentSelection(wholeDisplay);
    toggleCamera();
    toggleMicrophone();
    press();
    permissions->isGranted = false;
    finish(keldra::fail(diskFull));
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

TEST_F(AppModelRecording, LogsAFailureInOneLine) {
    recorder.startError = Error{"ScreenRecorderError", 8, "The output folder is gone.", {{"path", "/x"}}};
    ::testing::internal::CaptureStdout();
    makeRecording();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "[KELDRA] start failed: domain=ScreenRecorderError code=8 info=The output folder is gone.; path: /x\n");
    recorder.startError.reset();
    press();
    ::testing::internal::CaptureStdout();
    finish(keldra::fail(diskFull));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "[KELDRA] result failed: domain=POSIX code=28 info=No space left on device\n");
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
    EXPECT_EQ(analytics.application.terminations, quitAsks ? 0 : 1);
    EXPECT_EQ(model->recordingState(), state);
}

TEST_P(AppModelStates, QuitAtOnceOnceConfirmedUnlessRecording) {
    makeModelIn(GetParam().state).setIsCloseConfirmationPresented(true);
    model->confirmQuit();
    EXPECT_FALSE(model->isCloseConfirmationPresented());
    EXPECT_EQ(analytics.application.terminations, GetParam().quitAsks ? 0 : 1);
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
    model->openLastRecordingInEditor();
    EXPECT_TRUE(workspace->revealed.isEmpty());

    toggleCamera();
    model->setCurrentSelection(wholeDisplay);
    press();
    press();
    finish(take);
    model->revealLastRecording();
    EXPECT_EQ(workspace->revealed, QList<QUrl>{take.url});
    EXPECT_EQ(model->lastSavedURL(), take.url);

    model->openLastRecordingInEditor();
    EXPECT_EQ(model->lastSavedURL(), QUrl());
    EXPECT_FALSE(model->lastRecordingHasLiveClickTrack());
    EXPECT_FALSE(model->cameraEnabled());
    EXPECT_TRUE(edited.isEmpty()) << "the camera stops first";
    time.settle();
    EXPECT_FALSE(camera.isRunning);
    EXPECT_EQ(edited, (QList<std::pair<QUrl, bool>>{{take.url, true}}));
    model->openLastRecordingInEditor();
    time.settle();
    EXPECT_EQ(edited.size(), 1);
}

TEST_F(AppModelRecording, TheEditorStaysClosedWhenTheCameraIsWantedMeanwhile) {
    makeModel().setLastSavedURL(take.url);
    model->openLastRecordingInEditor();
    model->toggleCamera();
    time.settle();
    EXPECT_TRUE(edited.isEmpty());
    EXPECT_TRUE(camera.isRunning);
}

TEST_F(AppModelRecording, NothingReachesAModelThatIsGone) {
    const auto hold = [&](testing::Answers& answers) { answers.holds = true; };
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"permission",
         [&] {
             permissions->isGranted = false;
             hold(permissions->answers);
             makeRecording();
         }},
        {"camera",
         [&] {
             makeModel().setCurrentSelection(wholeDisplay);
             toggleCamera();
             hold(camera.answers);
             press();
         }},
        {"cameraToggle",
         [&] {
             hold(camera.answers);
             makeModel().toggleCamera();
         }},
        {"microphone",
         [&] {
             devices->microphones.authorization = CaptureAuthorization::undetermined;
             devices->holds = true;
             makeModel().toggleMicrophone();
         }},
        {"countdown",
         [&] {
             hold(countdowns);
             makeRecording();
         }},
        {"start",
         [&] {
             hold(recorder.answers);
             makeRecording();
         }},
        {"result", [&] { makeRecording(); }},
        {"selection",
         [&] {
             hold(selections);
             makeModel().selectCaptureMode(CaptureMode::region);
         }},
        {"folder",
         [&] {
             hold(dialogs->answers);
             makeModel().chooseOutputDirectory();
             time.advance(1s);
         }},
        {"folderSoon", [&] { makeModel().chooseOutputDirectory(); }},
        {"editor",
         [&] {
             makeModel().setLastSavedURL(take.url);
             hold(camera.answers);
             model->openLastRecordingInEditor();
         }},
        {"notice", [&] { makeModel().setErrorMessage("x"); }},
        {"level",
         [&] {
             makeModel();
             toggleMicrophone();
             meter->power = -10;
         }},
        {"deviceChange", [&] { makeModel(); }},
    };
    for (const auto& [name, step] : steps) {
        SCOPED_TRACE(name);
        permissions->isGranted = true;
        step();
        const auto starts = recorder.starts.size();
        const auto shown = dialogs->shown.size();
        devices->connect(CaptureDeviceKind::camera, devices->cameras.devices);
        model.reset();
        if (QLatin1String(name) == QLatin1String("result"))
            recorder.finish(take);
        devices->connect(CaptureDeviceKind::camera, devices->cameras.devices);
        for (testing::Answers* each :
             {&countdowns, &selections, &camera.answers, &permissions->answers, &dialogs->answers, &recorder.answers})
            each->releaseAll();
        if (std::exchange(devices->holds, false))
            devices->answer();
        time.advance(10s);
        EXPECT_EQ(recorder.starts.size(), starts);
        EXPECT_EQ(dialogs->shown.size(), shown);
        EXPECT_TRUE(edited.isEmpty());
    }
}

} // namespace
} // namespace keldra
