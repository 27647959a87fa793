#pragma once

#include "platform/CameraSession.h"

#include <memory>
#include <optional>
#include <vector>

namespace keldra {

/// A camera of this session's PipeWire. One that comes back after it was unplugged is seen again.
class PipeWireCameraSession final : public CameraSession {
public:
    /// `mainQueue` must outlive it.
    explicit PipeWireCameraSession(Executor& mainQueue);
    ~PipeWireCameraSession() override;

    /// Takes effect with the next start; what runs is stopped.
    void configure(const QString& deviceID, Executor& queue, FrameHandler frames, Completion<void> done) override;
    void start(Completion<bool> done) override;
    void stop(Completion<void> done) override;

private:
    class Run;
    /// Main's own view of a run.
    struct Start {
        std::optional<bool> answer;
        std::vector<Completion<bool>> waiting;
    };

    void endRun();

    Executor& m_mainQueue;
    QString m_deviceID;
    Executor* m_queue = nullptr;
    FrameHandler m_frames;
    std::shared_ptr<Run> m_run;
    std::shared_ptr<Start> m_start;
};

} // namespace keldra
