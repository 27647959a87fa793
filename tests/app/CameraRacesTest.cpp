#include "app/AppWorld.h"

namespace keldra {
namespace {

using testing::AppWorld;

/// Wishes about the camera that overtake each other; what comes of them is written down in one line.
class CameraRaces : public AppWorld {
public:
    struct Race {
        const char* name;
        std::function<void(CameraRaces&)> when;
        const char* wanted;
    };
    static QList<Race> races();

protected:
    /// Whether the camera is wanted and runs, and on what; the error and all notices.
    std::string outcome() const {
        QStringList words{model->cameraEnabled() ? "on" : "off"};
        words.append(camera.isRunning ? "running " + camera.deviceID : "still");
        if (!model->errorMessage().isEmpty())
            words.append("error: " + model->errorMessage());
        for (const QString& notice : notices)
            words.append("told: " + notice);
        return words.join(' ').toStdString();
    }
    void refuse(const QString& deviceID) { camera.refusals[deviceID] = Error{"Camera", 5, "It is in use.", {}}; }
    void hold() { camera.answers.holds = true; }
    void release() {
        camera.answers.releaseAll();
        time.settle();
    }
    void connect(const QList<CaptureDeviceOption>& cameras) {
        devices->connect(CaptureDeviceKind::camera, cameras);
        time.settle();
    }
};

QList<CameraRaces::Race> CameraRaces::races() {
    using W = CameraRaces;
    return {
        {"on", [](W& w) { w.toggleCamera(); }, "on running cam-a"},
        {"onAndOff",
         [](W& w) {
             w.toggleCamera();
             w.toggleCamera();
         },
         "off still"},
        {"refused",
         [](W& w) {
             w.refuse("cam-a");
             w.toggleCamera();
         },
         "off still error: It is in use. told: It is in use."},
        {"refusedAndThenNot",
         [](W& w) {
             w.refuse("cam-a");
             w.toggleCamera();
             w.camera.refusals.clear();
             w.toggleCamera();
         },
         "on running cam-a told: It is in use."},
        {"fastDoubleToggleOfARefusingCamera",
         [](W& w) {
             w.refuse("cam-a");
             w.hold();
             w.model->toggleCamera();
             w.model->toggleCamera();
             w.release();
         },
         "off still"},
        {"fastTripleToggle",
         [](W& w) {
             w.hold();
             for (int press = 0; press < 3; ++press)
                 w.model->toggleCamera();
             w.release();
         },
         "on running cam-a"},
        {"supersededToggleLeavesTheMessage",
         [](W& w) {
             w.hold();
             w.model->toggleCamera();
             w.model->toggleCamera();
             w.model->setErrorMessage("another");
             w.camera.answers.release(); // the start's
             w.time.settle();
             EXPECT_EQ(w.model->errorMessage(), "another");
             w.release();
         },
         "off still told: another"},
        {"otherDeviceWhileOn",
         [](W& w) {
             w.toggleCamera();
             w.model->selectCameraDevice("cam-b");
             w.time.settle();
         },
         "on running cam-b"},
        {"otherDeviceDuringTheStart",
         [](W& w) {
             w.refuse("cam-a");
             w.hold();
             w.model->toggleCamera();
             w.model->selectCameraDevice("cam-b");
             w.release();
         },
         "on running cam-b"},
        {"otherDeviceWhileOff", [](W& w) { w.model->selectCameraDevice("cam-b"); }, "off still"},
        {"unknownDevice",
         [](W& w) {
             w.toggleCamera();
             w.model->selectCameraDevice("cam-x");
             EXPECT_EQ(w.model->selectedCameraDeviceID(), "cam-a");
         },
         "on running cam-a"},
        {"unpluggedWhileOn",
         [](W& w) {
             w.toggleCamera();
             w.connect({{"cam-b", "B"}});
         },
         "on running cam-b"},
        {"unpluggedDuringTheStart",
         [](W& w) {
             w.refuse("cam-a");
             w.hold();
             w.model->toggleCamera();
             w.connect({{"cam-b", "B"}});
             w.release();
         },
         "on running cam-b"},
        {"unpluggedWhileOff",
         [](W& w) {
             w.connect({{"cam-b", "B"}});
         },
         "off still"},
        {"unpluggedWithoutAnother",
         [](W& w) {
             w.toggleCamera();
             w.connect({});
             EXPECT_EQ(w.model->selectedCameraDeviceID(), QString());
         },
         "off still error: No camera is available. told: No camera is available."},
        {"anotherIsPluggedIn",
         [](W& w) {
             w.toggleCamera();
             w.connect({{"cam-c", "C"}, {"cam-a", "A"}});
         },
         "on running cam-a"},
        {"recordingStartsDuringAToggleOff",
         [](W& w) {
             w.toggleCamera();
             w.model->setCurrentSelection(wholeDisplay);
             w.hold();
             w.model->toggleCamera();
             w.press();
             w.release();
             EXPECT_EQ(w.model->recordingState(), RecordingState::recording);
         },
         "off still"},
    };
}

class CameraRace : public CameraRaces, public ::testing::WithParamInterface<CameraRaces::Race> {};

TEST_P(CameraRace, IsWonByTheLast) {
    makeModel();
    GetParam().when(*this);
    EXPECT_EQ(outcome(), GetParam().wanted);
    EXPECT_EQ(preferences.value(preferenceKeys::cameraEnabled), model->cameraEnabled());
    EXPECT_EQ(preferences.value(preferenceKeys::cameraDeviceID), model->selectedCameraDeviceID());
}

INSTANTIATE_TEST_SUITE_P(Rows, CameraRace, ::testing::ValuesIn(CameraRaces::races()),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace keldra
