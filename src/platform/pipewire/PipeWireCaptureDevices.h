#pragma once

#include "platform/CaptureDevices.h"
#include "platform/pipewire/PipeWireConnection.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace keldra {

/// The microphones and cameras of this session's PipeWire; their ids are the names of their nodes. Whoever may reach
/// the daemon may use them; without a daemon there are none, until one comes.
class PipeWireCaptureDevices final : public CaptureDevices {
public:
    /// Returns when the devices are known, or after a second without an answer. `mainQueue` must outlive it.
    explicit PipeWireCaptureDevices(Executor& mainQueue);
    ~PipeWireCaptureDevices() override;

    CaptureAuthorization authorization(CaptureDeviceKind kind) const override;
    void requestAccess(CaptureDeviceKind kind, Completion<bool> done) override;
    QList<CaptureDeviceOption> devices(CaptureDeviceKind kind) const override;
    /// Of microphones the one that the desktop chose, of cameras the one with the highest priority.
    QString defaultDeviceID(CaptureDeviceKind kind) const override;

private:
    void appeared(const PipeWireNode& node);
    void vanished(std::uint32_t node);
    void setChoice(const std::string& key, const std::string& value);
    void setReachable(bool isReachable);
    void answered();
    void changed();

    Executor& m_mainQueue;
    /// Watched by what is on its way to main.
    const std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);

    mutable std::mutex m_lock;
    std::condition_variable m_whenAnswered;
    bool m_isAnswered = false;
    bool m_isReachable = false;
    /// In the order in which they came.
    std::map<std::uint32_t, PipeWireNode> m_cameras;
    std::map<std::uint32_t, PipeWireNode> m_microphones;
    QString m_chosenMicrophone;
    bool m_isChangeOnItsWay = false;

    /// The first to go: nothing is called after it.
    std::unique_ptr<PipeWireConnection> m_connection;
};

} // namespace keldra
