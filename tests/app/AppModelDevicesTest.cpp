#include "app/AppWorld.h"

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::AppWorld;
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

TEST_F(AppModelDevices, TheChoiceFollowsWhatIsThere) {
    struct Row {
        QString stored;
        QList<CaptureDeviceOption> devices;
        QString desktopsChoice;
        QString wanted;
    };
    const QList<CaptureDeviceOption> both{{"a", "A"}, {"b", "B"}};
    const Row rows[] = {{"b", both, "a", "b"},
                        {"", both, "b", "b"},
                        {"gone", both, "b", "b"},
                        {"gone", {{"a", "A"}}, "gone too", "a"},
                        {"gone", {}, "", ""}};
    for (const Row& row : rows) {
        SCOPED_TRACE((row.stored + " -> " + row.wanted).toStdString());
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

TEST_F(AppModelDevices, ARegionIsOnTheDisplayOfItsMiddle) {
    for (const auto& [rect, displayID] : {std::pair(QRectF(0, 0, 100, 100), 1U),
                                          {QRectF(1900, 200, 100, 100), 2U},
                                          {QRectF(1910, 500, 20, 20), 2U},
                                          {QRectF(2000, 0, 100, 100), 1U},
                                          {QRectF(-900, -900, 10, 10), 1U}}) {
        makeModel().updateRegionSelection(rect);
        EXPECT_EQ(model->currentSelection(), CaptureSelection(RegionSelection{displayID, rect})) << rect.x();
        EXPECT_EQ(model->selectedDisplayID(), displayID) << rect.x();
    }
}

class AppModelSelecting : public AppModelDevices {
protected:
    void select(CaptureMode mode) {
        model->selectCaptureMode(mode);
        time.settle();
    }
    const CaptureSelection region = RegionSelection{2, QRectF(2000, 200, 30, 30)};
};

TEST_F(AppModelSelecting, TakesDisplaysOnlyWhereTheDesktopPicks) {
    desktopPicks = true;
    makeModel();
    picked = region;
    for (const CaptureMode mode : {CaptureMode::region, CaptureMode::window}) {
        notices.clear();
        select(mode);
        EXPECT_EQ(model->currentSelection(), std::nullopt);
        EXPECT_EQ(notices, QStringList{"This desktop lets programs record whole displays only."});
    }
    select(CaptureMode::display);
    EXPECT_EQ(model->currentSelection(), wholeDisplay) << "without a question of ours";
    select(CaptureMode::display);
    EXPECT_EQ(model->currentSelection(), std::nullopt);
    go("record");
    EXPECT_FALSE(model->isSelectionRequiredPresented());
    EXPECT_EQ(model->currentSelection(), wholeDisplay);
}

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

} // namespace
} // namespace keldra
