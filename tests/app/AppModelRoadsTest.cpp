#include "app/AppWorld.h"

namespace keldra {
namespace {

using testing::AppWorld;

/// Roads through the state machine; what each leaves behind is written down in one line.
class AppModelRoads : public AppWorld {
public:
    struct Road {
        const char* name;
        std::function<void(AppModelRoads&)> given;
        std::function<void(AppModelRoads&)> when;
        const char* wanted;
    };
    static QList<Road> roads();

protected:
    /// The states; how often it was counted down, started, stopped; what is selected and saved; the error and all
    /// notices. What is nothing is left out.
    std::string outcome() const {
        static const char* const names[] = {"idle", "requesting", "countdown", "recording", "stopping", "failed"};
        QStringList words;
        for (const RecordingState state : states)
            words.append(names[int(state)]);
        for (const auto& [name, count] : {std::pair("counted", countdownsShown),
                                          {"started", int(recorder.starts.size())},
                                          {"stopped", recorder.stops}})
            if (count > 0)
                words.append(QStringLiteral("%1=%2").arg(name).arg(count));
        if (model->currentSelection())
            words.append("selected");
        if (!model->lastSavedURL().isEmpty())
            words.append("saved");
        if (!model->errorMessage().isEmpty())
            words.append("error: " + model->errorMessage());
        for (const QString& notice : notices)
            words.append("told: " + notice);
        return words.join(' ').toStdString();
    }
    void pick() { model->setCurrentSelection(wholeDisplay); }
    void record() {
        pick();
        press();
    }
    void release(testing::Answers& answers) {
        answers.releaseAll();
        time.settle();
    }
};

QList<AppModelRoads::Road> AppModelRoads::roads() {
    using W = AppModelRoads;
    const auto nothing = [](W&) {};
    const auto record = [](W& w) { w.record(); };
    const auto refuseStart = [](W& w) { w.recorder.startError = diskFull; };
    const auto askForScreen = [](W& w) { w.permissions->isGranted = false; };
    const auto refuseScreen = [](W& w) { w.permissions->isGranted = w.permissions->grants = false; };
    return {
        {"records", nothing, record, "countdown recording counted=1 started=1 selected"},
        {"saves", nothing,
         [](W& w) {
             w.record();
             w.press();
             w.finish(take);
         },
         "countdown recording stopping idle counted=1 started=1 stopped=1 saved"},
        {"failsToSave", nothing,
         [](W& w) {
             w.record();
             w.press();
             w.finish(keldra::fail(diskFull));
         },
         "countdown recording stopping failed counted=1 started=1 stopped=1 selected "
         "error: No space left on device told: No space left on device"},
        {"breaksOffByItself", nothing,
         [](W& w) {
             w.record();
             w.finish(keldra::fail(diskFull));
         },
         "countdown recording failed counted=1 started=1 selected "
         "error: No space left on device told: No space left on device"},
        {"endsByItselfWithAFile", nothing,
         [](W& w) {
             w.record();
             w.finish(take);
         },
         "countdown recording idle counted=1 started=1 saved"},
        {"cannotStart", refuseStart, record,
         "countdown failed counted=1 started=1 selected error: No space left on device told: No space left on device"},
        {"recordsAtOnceAfterAFailure", refuseStart,
         [](W& w) {
             w.record();
             w.recorder.startError.reset();
             w.press();
         },
         "countdown failed countdown recording counted=2 started=2 selected told: No space left on device"},
        {"hasNoSelection", nothing, [](W& w) { w.press(); }, ""},
        {"recordsWhereNothingIsForbidden", [](W& w) { w.hasPermissions = false; }, record,
         "countdown recording counted=1 started=1 selected"},
        {"isGrantedTheScreenAndWaitsForAnotherPress", askForScreen, record, "requesting idle selected"},
        {"recordsAtTheSecondPressAfterAGrant", askForScreen,
         [](W& w) {
             w.record();
             w.press();
         },
         "requesting idle countdown recording counted=1 started=1 selected"},
        {"isRefusedTheScreenTwice", refuseScreen,
         [](W& w) {
             w.record();
             w.press();
         },
         "requesting failed requesting failed selected error: Screen recording access was not granted "
         // The empty text between lets the second through.
         "told: Screen recording access was not granted told: Screen recording access was not granted"},
        {"hasLostTheMicrophonesPermission", nothing,
         [](W& w) {
             w.model->setLastSavedURL(take.url);
             w.toggleMicrophone();
             w.devices->microphones.authorization = CaptureAuthorization::denied;
             w.record();
         },
         "failed selected saved error: Microphone access was not granted. told: Microphone access was not granted."},
        {"isAskedForTheMicrophoneAgainAndAgrees", nothing,
         [](W& w) {
             w.toggleMicrophone();
             w.devices->microphones.authorization = CaptureAuthorization::undetermined;
             w.record();
         },
         "countdown recording counted=1 started=1 selected"},
        {"recordsWithoutACameraThatCannotStart", nothing,
         [](W& w) {
             w.toggleCamera();
             w.devices->cameras.authorization = CaptureAuthorization::denied;
             w.record();
             EXPECT_FALSE(w.model->cameraEnabled());
         },
         "countdown recording counted=1 started=1 selected told: Camera access was not granted."},
        {"clearsTheRecordingBefore", nothing,
         [](W& w) {
             w.model->setLastSavedURL(take.url);
             w.record();
         },
         "countdown recording counted=1 started=1 selected"},
        {"isStoppedWhileNothingRuns", nothing, [](W& w) { w.model->stopRecording(); }, ""},
        {"isStoppedTwice", nothing,
         [](W& w) {
             w.record();
             w.model->stopRecording();
             w.model->stopRecording();
         },
         "countdown recording stopping counted=1 started=1 stopped=1 selected"},
        {"isPressedTwiceWhileTheCameraStarts", nothing,
         [](W& w) {
             w.pick();
             w.toggleCamera();
             w.camera.answers.holds = true;
             w.model->startRecording();
             w.press();
             w.release(w.camera.answers);
         },
         "countdown recording counted=1 started=1 selected"},
        {"isOverBeforeItsStartHasAnswered", [](W& w) { w.recorder.answers.holds = true; },
         [](W& w) {
             w.record();
             w.finish(keldra::fail(diskFull));
             w.release(w.recorder.answers);
         },
         "countdown failed counted=1 started=1 selected error: No space left on device told: No space left on device"},
        {"losesTheSelectionDuringTheCountdownAndRecordsIt", [](W& w) { w.countdowns.holds = true; },
         [](W& w) {
             w.record();
             w.model->setCurrentSelection(std::nullopt);
             w.release(w.countdowns);
         },
         "countdown recording counted=1 started=1"},
        {"hasNoWindowsThatCountDown", nothing,
         [](W& w) {
             w.model->setWindows({});
             w.record();
         },
         "countdown recording started=1 selected"},
    };
}

class AppModelRoad : public AppModelRoads, public ::testing::WithParamInterface<AppModelRoads::Road> {};

TEST_P(AppModelRoad, LeadsThroughTheStates) {
    GetParam().given(*this);
    makeModel();
    GetParam().when(*this);
    EXPECT_EQ(outcome(), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(Rows, AppModelRoad, ::testing::ValuesIn(AppModelRoads::roads()),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace keldra
