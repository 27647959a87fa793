#pragma once

#include "doubles/VirtualTime.h"
#include "platform/RunningApplications.h"

#include <QStringList>

#include <algorithm>
#include <memory>
#include <vector>

namespace keldra::test {

/// A copy of the program, and what it is known for: it "records"; it is "deaf" to what it is asked; it is "stuck" and
/// does not end unless it is killed; it is "late", and there only when this copy claims the name.
struct ScriptedCopy {
    RunningApplication application;
    QStringList habits;
    bool is(const char* habit) const { return habits.contains(QString::fromLatin1(habit)); }
};

/// Copies that a test makes up; what is done to them is written down.
class ScriptedRunningApplications final : public RunningApplications {
public:
    ScriptedRunningApplications(VirtualTime& time, QList<ScriptedCopy> copies)
        : m_time(time), m_copies(std::move(copies)) {}

    void others(Completion<QList<RunningApplication>> done) override {
        QList<RunningApplication> found;
        for (const ScriptedCopy& copy : m_copies)
            if (!copy.is("late") || m_hasClaimed)
                found.append(copy.application);
        answer<QList<RunningApplication>>(std::move(done),
                                          hasBus ? Result<QList<RunningApplication>>(found) : noAnswer());
    }
    void makeWay(const RunningApplication& application, Completion<bool> done) override {
        log.append("makeWay:" + application.handle);
        const ScriptedCopy& copy = find(application);
        answer<bool>(std::move(done), copy.is("deaf") ? Result<bool>(noAnswer()) : !copy.is("records"));
    }
    void openFile(const RunningApplication& application, QUrl file, Completion<void> done) override {
        log.append("open:" + application.handle + ':' + file.toString());
        answer<void>(std::move(done), find(application).is("deaf") ? Result<void>(noAnswer()) : Result<void>());
    }
    void openPicker(const RunningApplication& application, Completion<void> done) override {
        log.append("pick:" + application.handle);
        answer<void>(std::move(done), find(application).is("deaf") ? Result<void>(noAnswer()) : Result<void>());
    }
    void terminate(const RunningApplication& application) override { log.append("TERM:" + application.handle); }
    void forceTerminate(const RunningApplication& application) override {
        log.append("KILL:" + application.handle);
        find(application).habits.removeAll("stuck");
    }
    void waitForEnd(const RunningApplication& application, std::chrono::milliseconds patience,
                    Completion<bool> done) override {
        if (find(application).is("stuck")) {
            m_timers.push_back(m_time.scheduler().after(patience, [done = std::move(done)] { done(false); }));
            return;
        }
        log.append("gone:" + application.handle);
        m_copies.removeIf([&](const ScriptedCopy& copy) { return copy.application == application; });
        answer<bool>(std::move(done), true);
    }
    void claim(ApplicationRequests served, Completion<bool> done) override {
        log.append("claim");
        requests = std::move(served);
        m_hasClaimed = true;
        answer<bool>(std::move(done), hasBus ? Result<bool>(m_copies.isEmpty()) : noAnswer());
    }

    QStringList log;
    bool hasBus = true;
    ApplicationRequests requests;

private:
    static tl::unexpected<Error> noAnswer() { return fail(Error{"D-Bus", 1, "no answer", {}}); }
    template <typename T>
    void answer(Completion<T> done, Result<T> result) {
        m_time.mainQueue().post([done = std::move(done), result = std::move(result)] { done(result); });
    }
    ScriptedCopy& find(const RunningApplication& application) {
        return *std::ranges::find(m_copies, application, &ScriptedCopy::application);
    }

    VirtualTime& m_time;
    QList<ScriptedCopy> m_copies;
    bool m_hasClaimed = false;
    std::vector<Timer> m_timers;
};

} // namespace keldra::test
