#pragma once

#include "doubles/Answers.h"
#include "platform/CameraSession.h"

#include <map>
#include <memory>
#include <vector>

namespace keldra {

/// What a test sees and steers of a ScriptedCamera; outlives the session.
struct CameraScript {
    explicit CameraScript(Executor& mainQueue) : answers(mainQueue) {}

    /// What is asked of the session is done when it is answered.
    Answers answers;
    /// Why a device cannot be set up.
    std::map<QString, Error> refusals;
    bool startsRunning = true;
    std::vector<QString> configured;
    bool isRunning = false;

    /// A picture of the camera, delivered as the real one does.
    void deliver(PixelBuffer picture) {
        if (m_queue)
            m_queue->post([frames = m_frames, picture] { frames(picture); });
    }

private:
    friend class ScriptedCamera;
    Executor* m_queue = nullptr;
    CameraSession::FrameHandler m_frames;
};

/// A camera whose pictures come from a test.
class ScriptedCamera final : public CameraSession {
public:
    explicit ScriptedCamera(std::shared_ptr<CameraScript> script) : m_script(std::move(script)) {}

    void configure(const QString& deviceID, Executor& queue, FrameHandler frames, Completion<void> done) override {
        m_script->answers.add([script = m_script, deviceID, &queue, frames, done] {
            if (const auto refusal = script->refusals.find(deviceID); refusal != script->refusals.end())
                return done(fail(refusal->second));
            script->configured.push_back(deviceID);
            script->m_queue = &queue;
            script->m_frames = frames;
            done({});
        });
    }
    void start(Completion<bool> done) override {
        m_script->answers.add([script = m_script, done] {
            script->isRunning = script->startsRunning;
            done(script->isRunning);
        });
    }
    void stop(Completion<void> done) override {
        m_script->answers.add([script = m_script, done] {
            script->isRunning = false;
            done({});
        });
    }

private:
    const std::shared_ptr<CameraScript> m_script;
};

} // namespace keldra
