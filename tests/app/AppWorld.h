#pragma once

#include "app/AppDoubles.h"
#include "app/AppModel.h"
#include "app/SettingsFile.h"
#include "doubles/FixedDesktop.h"
#include "doubles/ScriptedAudioMeter.h"
#include "doubles/ScriptedCamera.h"
#include "doubles/ScriptedCaptureDevices.h"
#include "doubles/ScriptedPointer.h"
#include "services/AnalyticsWorld.h"

#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <gtest/gtest.h>

namespace keldra::test {

/// A desktop with two screens, two cameras and two microphones, on which everything is permitted; the first test step
/// makes it worse where it likes, and then makes the model.
class AppWorld : public ::testing::Test {
protected:
    static inline const Error diskFull{"POSIX", 28, "No space left on device", {}};
    static inline const CaptureDeviceOption cameraA{"cam-a", "A"}, cameraB{"cam-b", "B"}, cameraC{"cam-c", "C"};
    static inline const CaptureSelection wholeDisplay = DisplaySelection{1, "Main"};
    static inline const RecordingOutput take{QUrl("file:///take.mov"), true};

    AppWorld() {
        devices->cameras.devices = {cameraA, cameraB};
        devices->cameras.defaultID = "cam-a";
        devices->microphones.devices = {{"mic-a", "A"}, {"mic-b", "B"}};
        devices->microphones.defaultID = "mic-b";
    }
    ~AppWorld() override {
        // What still waits holds coroutines.
        model.reset();
        releaseAll();
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
        if (desktopPicks)
            platform.pickDisplay = [](const DisplayCaptureConfiguration&, const Completion<PickedDisplay>&) {};
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

    QList<Answers*> everyAnswer() {
        return {&countdowns,       &selections,       &camera->answers, &permissions->answers,
                &dialogs->answers, &devices->answers, &recorder.answers};
    }
    void releaseAll() {
        for (Answers* each : everyAnswer())
            each->releaseAll();
        time.settle();
    }

    /// Carries out words such as "record press save", one after the other; what they mean is written below. What comes
    /// before a "|" happens before there is a model.
    void perform(const QString& story) {
        if (!story.contains('|'))
            makeModel();
        go(story);
    }
    /// The same with the model that is there.
    void go(const QString& story) {
        for (const QString& word : story.split(' ', Qt::SkipEmptyParts))
            if (word == "|")
                makeModel();
            else if (const auto step = m_steps.find(word); step != m_steps.end())
                step->second();
            else
                ADD_FAILURE() << "nobody knows how to " << word.toStdString();
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
    void makeRecording() { perform("record"); }
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
    bool desktopPicks = false;

    Aptabase aptabase = analytics.aptabase();
    Telemetry telemetry{aptabase, {analytics.key, {}, {}}};
    AppPreferences preferences{openSettings(folder.filePath("current.ini")),
                               openSettings(folder.filePath("legacy.ini")), UserFolders{folder.path(), folder.path()}};
    std::shared_ptr<CameraScript> camera = std::make_shared<CameraScript>(time.mainQueue());
    std::shared_ptr<CameraService> cameraService =
        std::make_shared<CameraService>(devices, std::make_unique<ScriptedCamera>(camera), time.queue("camera"));
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
    void pick() { model->setCurrentSelection(wholeDisplay); }
    void hold(Answers& answers) { answers.holds = true; }
    void refuse(const QString& cameraID) { camera->refusals[cameraID] = Error{"Camera", 5, "It is in use.", {}}; }
    void connect(const QList<CaptureDeviceOption>& cameras) {
        devices->connect(devices->cameras, cameras);
        time.settle();
    }
    void chooseCamera(const QString& cameraID) {
        model->selectCameraDevice(cameraID);
        time.settle();
    }

    // What perform() can do.
    const std::map<QString, std::function<void()>> m_steps{
        // The recording.
        {"pick", [this] { pick(); }},
        {"unpick", [this] { model->setCurrentSelection(std::nullopt); }},
        {"press", [this] { press(); }},
        {"record", [this] { pick(), press(); }},
        {"stop", [this] { model->stopRecording(); }},
        {"save", [this] { finish(take); }},
        {"fail", [this] { finish(keldra::fail(diskFull)); }},
        {"saved", [this] { model->setLastSavedURL(take.url); }},
        {"edit", [this] { model->openLastRecordingInEditor(); }},
        {"refuseStart", [this] { recorder.startError = diskFull; }},
        {"allowStart", [this] { recorder.startError.reset(); }},
        {"noCountdown", [this] { model->setWindows({}); }},
        // Permissions.
        {"nothingForbidden", [this] { hasPermissions = false; }},
        {"askForScreen", [this] { permissions->isGranted = false; }},
        {"refuseScreen", [this] { permissions->isGranted = permissions->grants = false; }},
        {"denyCamera", [this] { devices->cameras.authorization = CaptureAuthorization::denied; }},
        {"denyMicrophone", [this] { devices->microphones.authorization = CaptureAuthorization::denied; }},
        {"askForMicrophone", [this] { devices->microphones.authorization = CaptureAuthorization::undetermined; }},
        {"refuseMicrophone", [this] { devices->microphones.grants = false; }},
        {"noTrack", [this] { recorder.canSwitchMicrophone = false; }},
        // Devices: a toggle or choice that is not waited for, and one that is.
        {"toggle", [this] { model->toggleCamera(); }},
        {"camera", [this] { toggleCamera(); }},
        {"microphone", [this] { toggleMicrophone(); }},
        {"refuse-a", [this] { refuse("cam-a"); }},
        {"refuseNone", [this] { camera->refusals.clear(); }},
        {"choose-b", [this] { chooseCamera("cam-b"); }},
        {"choose-x", [this] { chooseCamera("cam-x"); }},
        {"plug-b", [this] { connect({cameraB}); }},
        {"plug-ca",
         [this] {
             connect({cameraC, cameraA});
         }},
        {"unplug", [this] { connect({}); }},
        // Windows and words.
        {"select", [this] { model->selectCaptureMode(CaptureMode::region); }},
        {"chooseFolder", [this] { model->chooseOutputDirectory(); }},
        {"wait", [this] { time.advance(std::chrono::seconds(1)); }},
        {"say", [this] { model->setErrorMessage("another"); }},
        // What waits for the test.
        {"holdCamera", [this] { hold(camera->answers); }},
        {"holdCountdown", [this] { hold(countdowns); }},
        {"holdStart", [this] { hold(recorder.answers); }},
        {"holdAll", [this] { std::ranges::for_each(everyAnswer(), [this](Answers* each) { hold(*each); }); }},
        {"release", [this] { releaseAll(); }},
        {"releaseOne", [this] { camera->answers.release(), time.settle(); }},
    };

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

} // namespace keldra::test
