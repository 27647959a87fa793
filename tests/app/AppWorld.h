#pragma once

#include "app/AppDoubles.h"
#include "app/AppModel.h"
#include "app/SettingsFile.h"
#include "doubles/FixedDesktop.h"
#include "doubles/ScriptedAudioMeter.h"
#include "doubles/ScriptedPointer.h"
#include "services/AnalyticsWorld.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra::testing {

/// A desktop with two screens, two cameras and two microphones, on which everything is permitted; the first test step
/// makes it worse where it likes, and then makes the model.
class AppWorld : public ::testing::Test {
protected:
    static inline const Error diskFull{"POSIX", 28, "No space left on device", {}};
    static inline const CaptureSelection wholeDisplay = DisplaySelection{1, "Main"};
    static inline const RecordingOutput take{QUrl("file:///take.mov"), true};

    AppWorld() {
        devices->cameras.devices = {{"cam-a", "A"}, {"cam-b", "B"}};
        devices->cameras.defaultID = "cam-a";
        devices->microphones.devices = {{"mic-a", "A"}, {"mic-b", "B"}};
        devices->microphones.defaultID = "mic-b";
    }
    ~AppWorld() override {
        // What still waits holds coroutines.
        model.reset();
        for (Answers* each :
             {&countdowns, &selections, &camera.answers, &permissions->answers, &dialogs->answers, &recorder.answers})
            each->releaseAll();
        time.settle();
    }

    virtual RecordingEngine& engine() { return recorder; }

    AppModel& makeModel() {
        Platform platform;
        platform.screens = screens;
        if (hasPermissions)
            platform.permissions = permissions;
        platform.workspace = workspace;
        platform.dialogs = dialogs;
        if (hasDevices)
            platform.devices = devices;
        model = std::make_unique<AppModel>(AppModel::Parts{
            platform, analytics.application, preferences, engine(), cameraService, levelMonitor, pointerMonitor,
            telemetry, time.scheduler(), time.mainQueue(), [this] { return analytics.now; }});
        model->setWindows({[this](CaptureMode mode, std::uint32_t displayID) { return select(mode, displayID); },
                           [this] { return countDown(); },
                           [this](const QUrl& url, bool hasLiveClickTrack) {
                               edited.append({url, hasLiveClickTrack});
                           },
                           {}});
        QObject::connect(model.get(), &AppModelFields::recordingStateChanged,
                         [this](RecordingState state) { states.append(state); });
        QObject::connect(model.get(), &AppModelFields::noticeChanged, [this](const std::optional<AppNotice>& notice) {
            if (notice)
                notices.append(notice->message);
        });
        time.settle();
        return *model;
    }

    /// Presses the record button and lets everything happen that needs no test.
    void press() {
        model->startRecording();
        time.settle();
    }
    void finish(Result<RecordingOutput> result) {
        recorder.finish(std::move(result));
        time.settle();
    }
    void toggleCamera() {
        model->toggleCamera();
        time.settle();
    }
    void toggleMicrophone() {
        model->toggleMicrophone();
        time.settle();
    }
    /// A model that records the whole display.
    AppModel& makeRecording() {
        makeModel().setCurrentSelection(wholeDisplay);
        press();
        return *model;
    }
    /// The microphone whose level is measured.
    QString metered() const { return meter->isRunning ? meter->started.back() : QString(); }
    QStringList telemetrySent() {
        aptabase.flush([] {});
        time.settle();
        return analytics.sentNames();
    }
    /// What a setting reads as in the file.
    QVariant stored(const char* key) {
        return openSettings(folder.filePath("current.ini"))->value(QString::fromLatin1(key));
    }

    AnalyticsWorld analytics;
    VirtualTime& time = analytics.time;
    QTemporaryDir folder;
    std::shared_ptr<FixedScreens> screens = std::make_shared<FixedScreens>(QList<Screen>{
        {1, "Main", QRectF(0, 0, 1920, 1080), {}, 1}, {2, "Side", QRectF(1920, 100, 1279.5, 800.4), {}, 1}});
    std::shared_ptr<ScriptedCaptureDevices> devices = std::make_shared<ScriptedCaptureDevices>(time.mainQueue());
    std::shared_ptr<ScriptedPermissions> permissions = std::make_shared<ScriptedPermissions>(time.mainQueue());
    std::shared_ptr<ScriptedWorkspace> workspace = std::make_shared<ScriptedWorkspace>();
    std::shared_ptr<ScriptedDialogs> dialogs = std::make_shared<ScriptedDialogs>(time.mainQueue());
    /// Whether this desktop forbids anything, and knows of cameras and microphones, at all.
    bool hasPermissions = true;
    bool hasDevices = true;

    Aptabase aptabase = analytics.aptabase();
    Telemetry telemetry{aptabase, {analytics.key, {}, {}}};
    AppPreferences preferences{openSettings(folder.filePath("current.ini")),
                               openSettings(folder.filePath("legacy.ini")), UserFolders{folder.path(), folder.path()}};
    CameraScript camera{time.mainQueue()};
    std::shared_ptr<CameraService> cameraService =
        std::make_shared<CameraService>(devices, std::make_unique<ScriptedCameraSession>(camera), time.queue("camera"));
    std::shared_ptr<AudioMeterScript> meter = std::make_shared<AudioMeterScript>();
    MicrophoneLevelMonitor levelMonitor{devices, std::make_unique<ScriptedAudioMeter>(meter), time.scheduler()};
    std::shared_ptr<PointerEffectsMonitor> pointerMonitor = std::make_shared<PointerEffectsMonitor>(
        std::make_shared<ScriptedPointer>(), std::make_shared<OwnWindows>(), time.clock(), time.scheduler());
    ScriptedRecordingEngine recorder{time.mainQueue()};

    /// Countdowns and selections on the screen; what the user picks; for what and where he was asked.
    Answers countdowns{time.mainQueue()};
    Answers selections{time.mainQueue()};
    int countdownsShown = 0;
    std::optional<CaptureSelection> picked;
    QList<std::pair<CaptureMode, std::uint32_t>> selectionsAsked;
    QList<std::pair<QUrl, bool>> edited;

    std::unique_ptr<AppModel> model;
    QList<RecordingState> states;
    QStringList notices;

private:
    QCoro::Task<> countDown() {
        ++countdownsShown;
        (void)co_await awaitCompletion<void>(
            [this](Completion<void> done) { countdowns.add([done = std::move(done)] { done({}); }); });
    }
    QCoro::Task<std::optional<CaptureSelection>> select(CaptureMode mode, std::uint32_t displayID) {
        selectionsAsked.append({mode, displayID});
        (void)co_await awaitCompletion<void>(
            [this](Completion<void> done) { selections.add([done = std::move(done)] { done({}); }); });
        co_return picked;
    }
};

} // namespace keldra::testing
