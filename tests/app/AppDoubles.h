#pragma once

#include "app/RecordingEngine.h"
#include "async/AwaitCompletion.h"
#include "platform/CameraSession.h"
#include "platform/CaptureDevices.h"
#include "platform/Dialogs.h"
#include "platform/Permissions.h"
#include "platform/Workspace.h"

#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace keldra::testing {

/// Answers that come in a later turn of main or, while it holds, when the test says so: first asked, first answered.
class Answers {
public:
    explicit Answers(Executor& mainQueue) : m_mainQueue(mainQueue) {}

    void add(Work answer) {
        m_waiting.push_back(std::move(answer));
        if (!holds)
            release();
    }
    void release() {
        m_mainQueue.post(std::move(m_waiting.front()));
        m_waiting.pop_front();
    }
    void releaseAll() {
        holds = false;
        while (!m_waiting.empty())
            release();
    }
    std::size_t waiting() const { return m_waiting.size(); }

    bool holds = false;

private:
    Executor& m_mainQueue;
    std::deque<Work> m_waiting;
};

/// Cameras and microphones that a test names.
class ScriptedCaptureDevices final : public CaptureDevices {
public:
    struct Kind {
        CaptureAuthorization authorization = CaptureAuthorization::authorized;
        QList<CaptureDeviceOption> devices;
        QString defaultID;
        /// What the user says when asked; it is the authorization from then on.
        bool grants = true;
        int requests = 0;
    };

    explicit ScriptedCaptureDevices(Executor& mainQueue) : m_mainQueue(mainQueue) {}

    CaptureAuthorization authorization(CaptureDeviceKind kind) const override { return kinds.at(kind).authorization; }
    void requestAccess(CaptureDeviceKind kind, Completion<bool> done) override {
        ++kinds.at(kind).requests;
        m_waiting.push_back([this, kind, done = std::move(done)] {
            Kind& asked = kinds.at(kind);
            asked.authorization = asked.grants ? CaptureAuthorization::authorized : CaptureAuthorization::denied;
            done(asked.grants);
        });
        if (!holds)
            answer();
    }
    QList<CaptureDeviceOption> devices(CaptureDeviceKind kind) const override { return kinds.at(kind).devices; }
    QString defaultDeviceID(CaptureDeviceKind kind) const override { return kinds.at(kind).defaultID; }

    /// The user answers what was asked first.
    void answer() {
        m_mainQueue.post(std::move(m_waiting.front()));
        m_waiting.pop_front();
    }
    /// Now these are connected.
    void connect(CaptureDeviceKind kind, QList<CaptureDeviceOption> devices) {
        kinds.at(kind).devices = std::move(devices);
        notifyChanged();
    }

    std::map<CaptureDeviceKind, Kind> kinds{{CaptureDeviceKind::camera, {}}, {CaptureDeviceKind::microphone, {}}};
    Kind& cameras = kinds.at(CaptureDeviceKind::camera);
    Kind& microphones = kinds.at(CaptureDeviceKind::microphone);
    /// Requests wait until the test answers.
    bool holds = false;

private:
    Executor& m_mainQueue;
    std::deque<Work> m_waiting;
};

/// A camera whose answers a test gives; outlives the session.
struct CameraScript {
    explicit CameraScript(Executor& mainQueue) : answers(mainQueue) {}

    Answers answers;
    /// Why a device cannot be set up.
    std::map<QString, Error> refusals;
    /// The last device set up.
    QString deviceID;
    bool isRunning = false;
};

class ScriptedCameraSession final : public CameraSession {
public:
    explicit ScriptedCameraSession(CameraScript& script) : m_script(script) {}

    void configure(const QString& deviceID, Executor&, FrameHandler, Completion<void> done) override {
        m_script.answers.add([this, deviceID, done = std::move(done)] {
            const auto refusal = m_script.refusals.find(deviceID);
            if (refusal != m_script.refusals.end())
                return done(fail(refusal->second));
            m_script.deviceID = deviceID;
            done({});
        });
    }
    void start(Completion<bool> done) override {
        m_script.answers.add([this, done = std::move(done)] {
            m_script.isRunning = true;
            done(true);
        });
    }
    void stop(Completion<void> done) override {
        m_script.answers.add([this, done = std::move(done)] {
            m_script.isRunning = false;
            done({});
        });
    }

private:
    CameraScript& m_script;
};

class ScriptedPermissions final : public Permissions {
public:
    explicit ScriptedPermissions(Executor& mainQueue) : answers(mainQueue) {}

    bool hasScreenCapture() const override { return isGranted; }
    void requestScreenCapture(Completion<bool> done) override {
        ++requests;
        answers.add([this, done = std::move(done)] {
            isGranted = grants;
            done(grants);
        });
    }

    Answers answers;
    bool isGranted = true;
    /// What the user says when asked.
    bool grants = true;
    int requests = 0;
};

class ScriptedWorkspace final : public Workspace {
public:
    void reveal(const QUrl& file) override { revealed.append(file); }
    bool hasSettings(SettingsPage) const override { return true; }
    void openSettings(SettingsPage page) override { opened.append(page); }

    QList<QUrl> revealed;
    QList<SettingsPage> opened;
};

class ScriptedDialogs final : public Dialogs {
public:
    explicit ScriptedDialogs(Executor& mainQueue) : answers(mainQueue) {}

    void chooseFolder(FolderDialog dialog, Completion<std::optional<QUrl>> done) override {
        shown.append(dialog);
        answers.add([this, done = std::move(done)] { done(choice); });
    }

    Answers answers;
    Result<std::optional<QUrl>> choice;
    QList<FolderDialog> shown;
};

/// A recorder whose start and end a test tells.
class ScriptedRecordingEngine final : public RecordingEngine {
public:
    explicit ScriptedRecordingEngine(Executor& mainQueue) : answers(mainQueue) {}

    QCoro::Task<Result<void>> start(RecordingRequest request, OnFinish onFinish) override {
        starts.push_back(std::move(request));
        m_onFinish = std::move(onFinish);
        co_return co_await awaitCompletion<void>([this](Completion<void> done) {
            answers.add([this, done = std::move(done)] {
                done(startError ? Result<void>(fail(*startError)) : Result<void>());
            });
        });
    }
    void stop() override { ++stops; }
    bool setMicrophoneEnabled(bool isEnabled) override {
        switches.push_back(isEnabled);
        return canSwitchMicrophone;
    }

    void finish(Result<RecordingOutput> result) { std::exchange(m_onFinish, nullptr)(std::move(result)); }

    Answers answers;
    std::optional<Error> startError;
    bool canSwitchMicrophone = true;
    std::vector<RecordingRequest> starts;
    std::vector<bool> switches;
    int stops = 0;

private:
    OnFinish m_onFinish;
};

} // namespace keldra::testing
