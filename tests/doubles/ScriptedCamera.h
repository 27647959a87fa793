#pragma once

#include "platform/CameraSession.h"

#include <deque>
#include <memory>
#include <vector>

namespace keldra {

/// What a test sees and steers of a ScriptedCamera; outlives the session.
struct CameraScript {
    std::vector<QString> configured;
    std::optional<Error> configureError;
    bool startsRunning = true;
    bool isRunning = false;
    /// While held, what is asked of the session waits for letGo().
    bool isHeld = false;

    void letGo() {
        isHeld = false;
        while (!m_waiting.empty()) {
            const auto work = std::move(m_waiting.front());
            m_waiting.pop_front();
            work();
        }
    }
    /// A picture of the camera, delivered as the real one does.
    void deliver(PixelBuffer picture) {
        if (m_queue)
            m_queue->post([frames = m_frames, picture] { frames(picture); });
    }

private:
    friend class ScriptedCamera;
    void perform(std::function<void()> work) {
        if (isHeld)
            m_waiting.push_back(std::move(work));
        else
            work();
    }
    std::deque<std::function<void()>> m_waiting;
    Executor* m_queue = nullptr;
    CameraSession::FrameHandler m_frames;
};

/// A camera whose pictures come from a test.
class ScriptedCamera final : public CameraSession {
public:
    ScriptedCamera(std::shared_ptr<CameraScript> script, Executor& mainQueue)
        : m_script(std::move(script)), m_mainQueue(mainQueue) {}

    void configure(const QString& deviceID, Executor& queue, FrameHandler frames, Completion<void> done) override {
        m_script->perform([=, this, &queue] {
            m_script->configured.push_back(deviceID);
            m_script->m_queue = &queue;
            m_script->m_frames = frames;
            const auto error = m_script->configureError;
            m_mainQueue.post([error, done] { done(error ? Result<void>(fail(*error)) : Result<void>()); });
        });
    }
    void start(Completion<bool> done) override {
        m_script->perform([this, done] {
            m_script->isRunning = m_script->startsRunning;
            m_mainQueue.post([isRunning = m_script->isRunning, done] { done(isRunning); });
        });
    }
    void stop(Completion<void> done) override {
        m_script->perform([this, done] {
            m_script->isRunning = false;
            m_mainQueue.post([done] { done({}); });
        });
    }

private:
    std::shared_ptr<CameraScript> m_script;
    Executor& m_mainQueue;
};

} // namespace keldra
