#include "app/AppWorld.h"

namespace keldra {
namespace {

using test::AppWorld;

/// A story and what it leaves behind, written down in one line.
struct Road {
    const char* name;
    const char* story;
    const char* wanted;
};

std::string nameOf(const ::testing::TestParamInfo<Road>& info) {
    return info.param.name;
}

class AppModelRoad : public AppWorld, public ::testing::WithParamInterface<Road> {
protected:
    QStringList words() const {
        QStringList words;
        if (!model->errorMessage().isEmpty())
            words.append("error: " + model->errorMessage());
        for (const QString& notice : notices)
            words.append("told: " + notice);
        return words;
    }
};

/// The states; how often it was counted down, started, stopped; what is selected and saved; the error and all notices.
/// What is nothing is left out.
TEST_P(AppModelRoad, LeadsThroughTheStates) {
    perform(GetParam().story);
    static const char* const names[] = {"idle", "requesting", "countdown", "recording", "stopping", "failed"};
    QStringList outcome;
    for (const RecordingState state : states)
        outcome.append(names[int(state)]);
    for (const auto& [name, count] :
         {std::pair("counted", countdownsShown), {"started", int(recorder.starts.size())}, {"stopped", recorder.stops}})
        if (count > 0)
            outcome.append(QStringLiteral("%1=%2").arg(name).arg(count));
    if (model->currentSelection())
        outcome.append("selected");
    if (!model->lastSavedURL().isEmpty())
        outcome.append("saved");
    EXPECT_EQ((outcome + words()).join(' ').toStdString(), GetParam().wanted);
}

#define DISK_FULL "error: No space left on device told: No space left on device"
#define NO_SCREEN "Screen recording access was not granted"
#define NO_MICROPHONE "Microphone access was not granted."

constexpr const char* recorded = "countdown recording counted=1 started=1 selected";

INSTANTIATE_TEST_SUITE_P(
    Rows, AppModelRoad,
    ::testing::Values(
        Road{"records", "record", recorded},
        Road{"saves", "record press save", "countdown recording stopping idle counted=1 started=1 stopped=1 saved"},
        Road{"failsToSave", "record press fail",
             "countdown recording stopping failed counted=1 started=1 stopped=1 selected " DISK_FULL},
        Road{"breaksOffByItself", "record fail", "countdown recording failed counted=1 started=1 selected " DISK_FULL},
        Road{"endsByItselfWithAFile", "record save", "countdown recording idle counted=1 started=1 saved"},
        Road{"cannotStart", "refuseStart | record", "countdown failed counted=1 started=1 selected " DISK_FULL},
        Road{"recordsAtOnceAfterAFailure", "refuseStart | record allowStart press",
             "countdown failed countdown recording counted=2 started=2 selected told: No space left on device"},
        Road{"hasNoSelection", "press", ""},
        Road{"recordsWhereNothingIsForbidden", "nothingForbidden | record", recorded},
        Road{"isGrantedTheScreenAndWaitsForAnotherPress", "askForScreen | record", "requesting idle selected"},
        Road{"recordsAtTheSecondPressAfterAGrant", "askForScreen | record press",
             "requesting idle countdown recording counted=1 started=1 selected"},
        // The empty text between lets the second notice through.
        Road{"isRefusedTheScreenTwice", "refuseScreen | record press",
             "requesting failed requesting failed selected "
             "error: " NO_SCREEN " told: " NO_SCREEN " told: " NO_SCREEN},
        Road{"hasLostTheMicrophonesPermission", "saved microphone denyMicrophone record",
             "failed selected saved error: " NO_MICROPHONE " told: " NO_MICROPHONE},
        Road{"isAskedForTheMicrophoneAgainAndAgrees", "microphone askForMicrophone record", recorded},
        Road{"recordsWithoutACameraThatCannotStart", "camera denyCamera record",
             "countdown recording counted=1 started=1 selected told: Camera access was not granted."},
        Road{"clearsTheRecordingBefore", "saved record", recorded}, Road{"isStoppedWhileNothingRuns", "stop", ""},
        Road{"isStoppedTwice", "record stop stop",
             "countdown recording stopping counted=1 started=1 stopped=1 selected"},
        Road{"isPressedTwiceWhileTheCameraStarts", "camera holdCamera record press release", recorded},
        Road{"isOverBeforeItsStartHasAnswered", "holdStart | record fail release",
             "countdown failed counted=1 started=1 selected " DISK_FULL},
        Road{"losesTheSelectionDuringTheCountdownAndRecordsIt", "holdCountdown | record unpick release",
             "countdown recording counted=1 started=1"},
        Road{"hasNoWindowsThatCountDown", "noCountdown record", "countdown recording started=1 selected"}),
    nameOf);

/// Wishes about the camera that overtake each other.
class CameraRace : public AppModelRoad {};

/// Whether the camera is wanted and runs, and on what; whether the editor came; the error and all notices.
TEST_P(CameraRace, IsWonByTheLast) {
    perform(GetParam().story);
    QStringList outcome{model->cameraEnabled() ? "on" : "off"};
    outcome.append(camera->isRunning ? "running " + camera->configured.back() : "still");
    if (!edited.isEmpty())
        outcome.append("edited");
    EXPECT_EQ((outcome + words()).join(' ').toStdString(), GetParam().wanted);
    EXPECT_EQ(preferences.value(preferenceKeys::cameraEnabled), model->cameraEnabled());
    EXPECT_EQ(preferences.value(preferenceKeys::cameraDeviceID), model->selectedCameraDeviceID());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CameraRace,
    ::testing::Values(
        Road{"on", "camera", "on running cam-a"}, Road{"onAndOff", "camera camera", "off still"},
        Road{"refused", "refuse-a camera", "off still error: It is in use. told: It is in use."},
        Road{"refusedAndThenNot", "refuse-a camera refuseNone camera", "on running cam-a told: It is in use."},
        Road{"fastDoubleToggleOfARefusingCamera", "refuse-a holdCamera toggle toggle release", "off still"},
        Road{"fastTripleToggle", "holdCamera toggle toggle toggle release", "on running cam-a"},
        Road{"supersededToggleLeavesTheMessage", "holdCamera toggle toggle say releaseOne wait release",
             "off still told: another"},
        Road{"otherDeviceWhileOn", "camera choose-b", "on running cam-b"},
        Road{"otherDeviceDuringTheStart", "refuse-a holdCamera toggle choose-b release", "on running cam-b"},
        Road{"otherDeviceWhileOff", "choose-b", "off still"},
        Road{"unknownDevice", "camera choose-x", "on running cam-a"},
        Road{"unpluggedWhileOn", "camera plug-b", "on running cam-b"},
        Road{"unpluggedDuringTheStart", "refuse-a holdCamera toggle plug-b release", "on running cam-b"},
        Road{"unpluggedWhileOff", "plug-b", "off still"},
        Road{"unpluggedWithoutAnother", "camera unplug",
             "off still error: No camera is available. told: No camera is available."},
        Road{"anotherIsPluggedIn", "camera plug-ca", "on running cam-a"},
        Road{"theEditorStopsIt", "saved camera edit wait", "off still edited"},
        Road{"wantedAgainBeforeTheEditorCame", "saved edit camera", "on running cam-a"},
        Road{"recordingStartsDuringAToggleOff", "camera pick holdCamera toggle press release", "off still"}),
    nameOf);

class MicrophoneRoad : public AppModelRoad {};

/// Whether the microphone is wanted, and measured; what the recorder was told; how often the user was asked; the error.
TEST_P(MicrophoneRoad, IsSwitchedOnWherePermitted) {
    perform(GetParam().story);
    QStringList outcome{model->microphoneEnabled() ? "on" : "off"};
    outcome.append(metered().isEmpty() ? "silent" : metered());
    for (const bool isEnabled : recorder.switches)
        outcome.append(isEnabled ? "switched-on" : "switched-off");
    if (devices->microphones.requests > 0)
        outcome.append("asked");
    if (!model->errorMessage().isEmpty())
        outcome.append("error: " + model->errorMessage());
    EXPECT_EQ(outcome.join(' ').toStdString(), GetParam().wanted);
    EXPECT_EQ(preferences.value(preferenceKeys::microphoneEnabled), model->microphoneEnabled());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MicrophoneRoad,
    ::testing::Values(
        Road{"permitted", "microphone", "on mic-b"},
        Road{"denied", "denyMicrophone microphone", "off silent error: " NO_MICROPHONE},
        Road{"askedAndGranted", "askForMicrophone microphone", "on mic-b asked"},
        Road{"askedAndRefused", "askForMicrophone refuseMicrophone microphone",
             "off silent asked error: " NO_MICROPHONE},
        Road{"recording", "record microphone", "on mic-b switched-on"},
        Road{"recordingWithoutATrack", "noTrack record microphone",
             "off silent switched-on "
             "error: The microphone was not ready to be enabled during this recording."},
        Road{"recordingAndDenied", "denyMicrophone record microphone", "off silent error: " NO_MICROPHONE},
        Road{"alwaysSwitchedOff", "noTrack microphone record denyMicrophone microphone", "off silent switched-off"},
        Road{"grantedDuringTheRecording", "askForMicrophone record holdAll microphone release",
             "on mic-b switched-on asked"}),
    nameOf);

/// What waits for an answer while its model goes.
class AppModelEnd : public AppModelRoad {};

TEST_P(AppModelEnd, NothingReachesAModelThatIsGone) {
    meter->power = -10;
    perform(GetParam().story);
    const auto starts = recorder.starts.size();
    const auto shown = dialogs->shown.size();
    model.reset();
    if (GetParam().wanted == std::string("result"))
        recorder.finish(take);
    devices->connect(devices->cameras, {{"cam-b", "B"}});
    releaseAll();
    time.advance(std::chrono::seconds(10));
    EXPECT_EQ(recorder.starts.size(), starts);
    EXPECT_EQ(dialogs->shown.size(), shown);
    EXPECT_TRUE(edited.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AppModelEnd,
    ::testing::Values(Road{"permission", "askForScreen holdAll | record", ""},
                      Road{"camera", "camera holdAll record", ""}, Road{"cameraToggle", "holdAll toggle", ""},
                      Road{"microphone", "askForMicrophone holdAll | microphone", ""},
                      Road{"countdown", "holdAll record", ""}, Road{"start", "holdStart record", ""},
                      Road{"result", "record", "result"}, Road{"selection", "holdAll select", ""},
                      Road{"folder", "holdAll chooseFolder wait", ""}, Road{"folderSoon", "chooseFolder", ""},
                      Road{"editor", "saved holdAll edit", ""}, Road{"notice", "say", ""},
                      Road{"level", "microphone", ""}),
    nameOf);

} // namespace
} // namespace keldra
