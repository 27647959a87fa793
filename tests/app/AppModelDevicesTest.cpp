#include "app/AppWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using testing::AppWorld;
namespace keys = preferenceKeys;

class AppModelDevices : public AppWorld {};

TEST_F(AppModelDevices, MicrophoneAndCameraBeginSwitchedOff) {
    preferences.setValue(keys::microphoneEnabled, true);
    preferences.setValue(keys::cameraEnabled, true);
    makeModel();
    EXPECT_FALSE(model->microphoneEnabled());
    EXPECT_FALSE(model->cameraEnabled());
    EXPECT_EQ(stored("preferences.microphoneEnabled"), "false");
    EXPECT_EQ(stored("preferences.cameraEnabled"), "false");
    EXPECT_FALSE(camera->isRunning);
    EXPECT_EQ(metered(), QString());
}

struct ChoiceRow {
    const char* name;
    QString stored;
    QList<CaptureDeviceOption> devices;
    QString desktopsChoice;
    QString wanted;
};

class AppModelDeviceChoice : public AppModelDevices, public ::testing::WithParamInterface<ChoiceRow> {};

TEST_P(AppModelDeviceChoice, FollowsWhatIsThere) {
    const ChoiceRow& row = GetParam();
    preferences.setValue(keys::cameraDeviceID, row.stored);
    preferences.setValue(keys::microphoneDeviceID, row.stored);
    for (auto* kind : {&devices->cameras, &devices->microphones}) {
        kind->devices = row.devices;
        kind->defaultID = row.desktopsChoice;
    }
    makeModel();
    EXPECT_EQ(model->cameraDevices(), row.devices);
    EXPECT_EQ(model->selectedCameraDeviceID(), row.wanted);
    EXPECT_EQ(model->selectedMicrophoneDeviceID(), row.wanted);
    EXPECT_EQ(preferences.value(keys::cameraDeviceID), row.wanted);
    EXPECT_EQ(preferences.value(keys::microphoneDeviceID), row.wanted);
}

INSTANTIATE_TEST_SUITE_P(Rows, AppModelDeviceChoice,
                         ::testing::Values(ChoiceRow{"storedOne", "b", {{"a", "A"}, {"b", "B"}}, "a", "b"},
                                           ChoiceRow{"nothingStored", "", {{"a", "A"}, {"b", "B"}}, "b", "b"},
                                           ChoiceRow{"storedOneIsGone", "x", {{"a", "A"}, {"b", "B"}}, "b", "b"},
                                           ChoiceRow{"desktopsChoiceIsGoneToo", "x", {{"a", "A"}}, "y", "a"},
                                           ChoiceRow{"noDevices", "x", {}, "", ""}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppModelDevices, ADesktopWithoutDevicesRefusesThem) {
    hasDevices = false;
    makeModel();
    toggleMicrophone();
    EXPECT_FALSE(model->microphoneEnabled());
    EXPECT_EQ(model->errorMessage(), "Microphone access was not granted.");
    EXPECT_EQ(model->selectedCameraDeviceID(), QString());
}

TEST_F(AppModelDevices, TheFirstCameraThatIsPluggedInRestartsNothing) {
    devices->cameras.devices.clear();
    devices->cameras.authorization = CaptureAuthorization::undetermined;
    devices->answers.holds = true;
    makeModel();
    toggleCamera();
    devices->connect(devices->cameras, {{"cam-a", "A"}});
    time.settle();
    EXPECT_EQ(model->selectedCameraDeviceID(), "cam-a");
    EXPECT_EQ(devices->cameras.requests, 1) << "of the one start";
    releaseAll();
    EXPECT_TRUE(camera->isRunning);
}

struct MicrophoneRow {
    const char* name;
    CaptureAuthorization authorization;
    bool grants;
    bool isRecording;
    bool recorderSwitches;
    bool wantedEnabled;
    int wantedRequests;
    const char* wantedError;
};

class AppModelMicrophone : public AppModelDevices, public ::testing::WithParamInterface<MicrophoneRow> {};

TEST_P(AppModelMicrophone, IsSwitchedOnWherePermitted) {
    const MicrophoneRow& row = GetParam();
    devices->microphones.authorization = row.authorization;
    devices->microphones.grants = row.grants;
    recorder.canSwitchMicrophone = row.recorderSwitches;
    if (row.isRecording)
        makeRecording();
    else
        makeModel();
    const QString before = model->errorMessage();
    toggleMicrophone();
    EXPECT_EQ(model->microphoneEnabled(), row.wantedEnabled);
    EXPECT_EQ(preferences.value(keys::microphoneEnabled), row.wantedEnabled);
    EXPECT_EQ(metered(), row.wantedEnabled ? "mic-b" : "");
    EXPECT_EQ(devices->microphones.requests, row.wantedRequests);
    EXPECT_EQ(model->errorMessage(), row.wantedError);
    EXPECT_EQ(recorder.switches.size(), row.isRecording && row.authorization != CaptureAuthorization::denied ? 1U : 0U);
}

constexpr const char* notGranted = "Microphone access was not granted.";
constexpr const char* notReady = "The microphone was not ready to be enabled during this recording.";
using enum CaptureAuthorization;

INSTANTIATE_TEST_SUITE_P(
    Rows, AppModelMicrophone,
    ::testing::Values(MicrophoneRow{"permitted", authorized, false, false, false, true, 0, ""},
                      MicrophoneRow{"denied", denied, true, false, false, false, 0, notGranted},
                      MicrophoneRow{"askedAndGranted", undetermined, true, false, false, true, 1, ""},
                      MicrophoneRow{"askedAndRefused", undetermined, false, false, false, false, 1, notGranted},
                      MicrophoneRow{"recording", authorized, false, true, true, true, 0, ""},
                      MicrophoneRow{"recordingWithoutATrack", authorized, false, true, false, false, 0, notReady},
                      MicrophoneRow{"recordingAndDenied", denied, false, true, true, false, 0, notGranted}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppModelDevices, AMicrophoneIsAlwaysSwitchedOff) {
    recorder.canSwitchMicrophone = false;
    perform("microphone record denyMicrophone");
    toggleMicrophone();
    EXPECT_FALSE(model->microphoneEnabled());
    EXPECT_EQ(model->errorMessage(), QString());
    EXPECT_EQ(metered(), QString());
    EXPECT_EQ(recorder.switches, std::vector<bool>{false});
}

TEST_F(AppModelDevices, APermissionThatComesDuringTheRecordingSwitchesTheRecorder) {
    devices->microphones.authorization = undetermined;
    devices->answers.holds = true;
    makeRecording();
    toggleMicrophone();
    EXPECT_TRUE(recorder.switches.empty());
    releaseAll();
    EXPECT_EQ(recorder.switches, std::vector<bool>{true});
    EXPECT_TRUE(model->microphoneEnabled());
}

TEST_F(AppModelDevices, TheMeterFollowsTheMicrophone) {
    meter->canStart = false;
    makeModel();
    toggleMicrophone();
    EXPECT_TRUE(model->microphoneEnabled()) << "a meter that cannot start shows nothing";
    toggleMicrophone();
    meter->canStart = true;
    toggleMicrophone();
    EXPECT_EQ(metered(), "mic-b");
    meter->power = -5;
    time.advance(MicrophoneLevelMonitor::tickInterval);
    EXPECT_EQ(model->microphoneLevel(), 1);

    model->selectMicrophoneDevice("mic-x");
    EXPECT_EQ(metered(), "mic-b");
    model->selectMicrophoneDevice("mic-a");
    EXPECT_EQ(metered(), "mic-a");
    EXPECT_EQ(preferences.value(keys::microphoneDeviceID), "mic-a");

    devices->connect(devices->microphones, {{"mic-b", "B"}});
    EXPECT_EQ(metered(), "mic-a") << "a turn later";
    time.settle();
    EXPECT_EQ(metered(), "mic-b");
    devices->connect(devices->microphones, {});
    time.settle();
    EXPECT_EQ(metered(), QString());
    EXPECT_EQ(model->microphoneLevel(), 0);
    EXPECT_TRUE(model->microphoneEnabled()) << "the next one that is plugged in is used";
    EXPECT_TRUE(notices.isEmpty());
}

TEST_F(AppModelDevices, ListsDisplaysInPoints) {
    screens->current.append({0, "Nameless", QRectF(0, 0, 1, 1), {}, 1});
    makeModel();
    EXPECT_EQ(model->displays(), (QList<CaptureDisplay>{{1, "Main", "1920 x 1080"}, {2, "Side", "1280 x 800"}}));
    EXPECT_EQ(model->selectedDisplayID(), 1U);
    model->updateRegionSelection(QRectF(2000, 200, 10, 10));
    EXPECT_EQ(model->selectedDisplayID(), 2U);
    model->refreshDisplays();
    EXPECT_EQ(model->selectedDisplayID(), 2U) << "still there";
    screens->current.clear();
    model->refreshDisplays();
    EXPECT_EQ(model->selectedDisplayID(), 0U);
}

struct RegionRow {
    const char* name;
    QRectF rect;
    std::uint32_t displayID;
};

class AppModelRegion : public AppModelDevices, public ::testing::WithParamInterface<RegionRow> {};

TEST_P(AppModelRegion, IsOnTheDisplayOfItsMiddle) {
    makeModel().updateRegionSelection(GetParam().rect);
    EXPECT_EQ(model->currentSelection(), CaptureSelection(RegionSelection{GetParam().displayID, GetParam().rect}));
    EXPECT_EQ(model->selectedDisplayID(), GetParam().displayID);
}

INSTANTIATE_TEST_SUITE_P(Rows, AppModelRegion,
                         ::testing::Values(RegionRow{"main", QRectF(0, 0, 100, 100), 1},
                                           RegionRow{"mostlySide", QRectF(1900, 200, 100, 100), 2},
                                           RegionRow{"edgeOfBoth", QRectF(1910, 500, 20, 20), 2},
                                           RegionRow{"belowSide", QRectF(2000, 0, 100, 100), 1},
                                           RegionRow{"nowhere", QRectF(-900, -900, 10, 10), 1}),
                         [](const auto& row) { return std::string(row.param.name); });

class AppModelSelecting : public AppModelDevices {
protected:
    void select(CaptureMode mode) {
        model->selectCaptureMode(mode);
        time.settle();
    }
    const CaptureSelection region = RegionSelection{2, QRectF(2000, 200, 30, 30)};
};

TEST_F(AppModelSelecting, PicksClearsAndKeeps) {
    makeModel().setIsSelectionRequiredPresented(true);
    picked = region;
    select(CaptureMode::region);
    EXPECT_FALSE(model->isSelectionRequiredPresented());
    EXPECT_EQ(model->currentSelection(), region);
    EXPECT_EQ(model->selectedDisplayID(), 2U);

    picked = std::nullopt;
    model->setErrorMessage("x");
    select(CaptureMode::display);
    EXPECT_EQ(model->captureMode(), CaptureMode::display);
    EXPECT_EQ(model->currentSelection(), region) << "cancelled";
    EXPECT_EQ(model->errorMessage(), QString());

    select(CaptureMode::display); // the selection is not of this mode, so it is asked for again
    picked = wholeDisplay;
    select(CaptureMode::display);
    EXPECT_EQ(model->currentSelection(), wholeDisplay);
    select(CaptureMode::display);
    EXPECT_EQ(model->currentSelection(), std::nullopt) << "the active mode again";
    using Asked = QList<std::pair<CaptureMode, std::uint32_t>>;
    EXPECT_EQ(selectionsAsked, (Asked{{CaptureMode::region, 1},
                                      {CaptureMode::display, 2},
                                      {CaptureMode::display, 2},
                                      {CaptureMode::display, 2}}));
}

TEST_F(AppModelSelecting, AStandingSelectionIsEnoughUnlessForced) {
    makeModel().setCurrentSelection(wholeDisplay);
    const auto choose = [&](bool force) {
        auto task = model->chooseCaptureSelection(force);
        time.settle();
        std::optional<bool> answer;
        task.then([&](bool stands) { answer = stands; });
        return answer;
    };
    EXPECT_EQ(choose(false), true);
    EXPECT_TRUE(selectionsAsked.isEmpty());
    EXPECT_EQ(choose(true), false);
    picked = region;
    EXPECT_EQ(choose(true), true);
    model->setWindows({});
    EXPECT_EQ(choose(true), false);
    EXPECT_EQ(model->currentSelection(), region);
}

} // namespace
} // namespace keldra
