#pragma once

#include "base/Executor.h"
#include "platform/CaptureDevices.h"

#include <deque>
#include <map>
#include <utility>

namespace keldra {

/// Cameras and microphones that a test names.
class FixedCaptureDevices final : public CaptureDevices {
public:
    struct Kind {
        CaptureAuthorization authorization = CaptureAuthorization::authorized;
        QList<CaptureDeviceOption> devices;
        QString defaultID;
        /// What the user says when asked; it is the authorization from then on.
        bool grants = true;
        int requests = 0;
    };

    explicit FixedCaptureDevices(Executor& mainQueue) : m_mainQueue(mainQueue) {}

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

} // namespace keldra
