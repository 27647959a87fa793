#pragma once

#include "base/Executor.h"
#include "platform/CaptureDevices.h"

namespace keldra {

/// Devices that a test names, the same for both kinds.
class FixedCaptureDevices final : public CaptureDevices {
public:
    explicit FixedCaptureDevices(Executor& mainQueue) : m_mainQueue(mainQueue) {}
    CaptureAuthorization authorization(CaptureDeviceKind) const override { return state; }
    void requestAccess(CaptureDeviceKind, Completion<bool> done) override {
        ++requests;
        m_mainQueue.post([answer = answer, done = std::move(done)] { done(answer); });
    }
    QList<CaptureDeviceOption> devices(CaptureDeviceKind) const override { return all; }
    QString defaultDeviceID(CaptureDeviceKind) const override { return choice; }

    CaptureAuthorization state = CaptureAuthorization::authorized;
    bool answer = true;
    int requests = 0;
    QList<CaptureDeviceOption> all{{"first", "First"}, {"second", "Second"}};
    QString choice = "second";

private:
    Executor& m_mainQueue;
};

} // namespace keldra
