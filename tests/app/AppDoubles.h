#pragma once

#include "app/RecordingEngine.h"
#include "async/AwaitCompletion.h"
#include "doubles/Answers.h"
#include "platform/Dialogs.h"
#include "platform/Permissions.h"
#include "platform/Workspace.h"

#include <optional>
#include <vector>

namespace keldra::test {

class ScriptedPermissions final : public Permissions {
public:
    explicit ScriptedPermissions(Executor& mainQueue) : answers(mainQueue) {}

    bool hasScreenCapture() const override { return isGranted; }
    void requestScreenCapture(Completion<bool> done) override {
        answers.add([this, done = std::move(done)] {
            isGranted = grants;
            done(grants);
        });
    }

    Answers answers;
    bool isGranted = true;
    /// What the user says when asked.
    bool grants = true;
};

class ScriptedWorkspace final : public Workspace {
public:
    void reveal(const QUrl& file) override { revealed.append(file); }
    bool hasSettings(SettingsPage) const override { return hasPages; }
    void openSettings(SettingsPage page) override { opened.append(page); }

    QList<QUrl> revealed;
    QList<SettingsPage> opened;
    /// Whether this desktop has settings pages that we know of.
    bool hasPages = true;
};

class ScriptedDialogs final : public Dialogs {
public:
    explicit ScriptedDialogs(Executor& mainQueue) : answers(mainQueue) {}

    void chooseFolder(FolderDialog dialog, Completion<std::optional<QUrl>> done) override {
        shown.append(dialog);
        answers.add([this, done = std::move(done)] { done(choice); });
    }
    void chooseFile(FileDialog dialog, Completion<std::optional<QUrl>> done) override {
        shownFiles.append(dialog);
        answers.add([this, done = std::move(done)] { done(choice); });
    }

    Answers answers;
    Result<std::optional<QUrl>> choice;
    QList<FolderDialog> shown;
    QList<FileDialog> shownFiles;
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

} // namespace keldra::test
