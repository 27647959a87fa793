#pragma once

#include "doubles/Answers.h"
#include "platform/CaptureDevices.h"

namespace keldra {

/// Cameras and microphones that a test names.
class ScriptedCaptureDevices final : public CaptureDevices {
public:
    struct Kind {
        QList<CaptureDeviceOption> devices{{"first", "First"}, {"second", "Second"}};
        QString defaultID = "second";
        CaptureAuthorization authorization = CaptureAuthorization::authorized;
        /// What the user says when asked; it is the authorization from then on.
        bool grants = true;
        int requests = 0;
    };

    explicit ScriptedCaptureDevices(Executor& mainQueue) : answers(mainQueue) {}

    CaptureAuthorization authorization(CaptureDeviceKind kind) const override { return of(kind).authorization; }
    void requestAccess(CaptureDeviceKind kind, Completion<bool> done) override {
        Kind& asked = kind == CaptureDeviceKind::camera ? cameras : microphones;
        ++asked.requests;
        answers.add([&asked, done = std::move(done)] {
            asked.authorization = asked.grants ? CaptureAuthorization::authorized : CaptureAuthorization::denied;
            done(asked.grants);
        });
    }
    QList<CaptureDeviceOption> devices(CaptureDeviceKind kind) const override { return of(kind).devices; }
    QString defaultDeviceID(CaptureDeviceKind kind) const override { return of(kind).defaultID; }

    /// Now these are connected.
    void connect(Kind& kind, QList<CaptureDeviceOption> devices) {
        kind.devices = std::move(devices);
        notifyChanged();
    }

    Kind cameras;
    Kind microphones;
    Answers answers;

private:
    const Kind& of(CaptureDeviceKind kind) const { return kind == CaptureDeviceKind::camera ? cameras : microphones; }
};

} // namespace keldra
