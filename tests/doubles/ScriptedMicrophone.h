#pragma once

#include "platform/MicrophoneStream.h"

#include <memory>
#include <optional>

namespace keldra {

/// What a test sees and steers of a ScriptedMicrophone; outlives the stream.
struct MicrophoneScript {
    AudioFormat format{SampleKind::int24, 48000, 1};
    std::optional<Error> startError;
    std::optional<QString> deviceID;
    int stops = 0;
    /// What the device still holds when it is told to stop.
    AudioBuffer held;

    void deliver(AudioBuffer buffer) {
        if (m_queue && buffer && stops == 0)
            m_queue->post([buffers = m_buffers, buffer] { buffers(buffer); });
    }

private:
    friend class ScriptedMicrophone;
    Executor* m_queue = nullptr;
    MicrophoneStream::BufferHandler m_buffers;
};

/// A microphone whose sound comes from a test.
class ScriptedMicrophone final : public MicrophoneStream {
public:
    ScriptedMicrophone(std::shared_ptr<MicrophoneScript> script, Executor& mainQueue)
        : m_script(std::move(script)), m_mainQueue(mainQueue) {}

    void start(const QString& deviceID, Executor& queue, BufferHandler buffers, Completion<AudioFormat> done) override {
        m_script->deviceID = deviceID;
        m_script->m_queue = &queue;
        m_script->m_buffers = std::move(buffers);
        m_mainQueue.post([script = m_script, done = std::move(done)] {
            done(script->startError ? Result<AudioFormat>(fail(*script->startError)) : script->format);
        });
    }
    void stop(Completion<void> done) override {
        m_script->deliver(m_script->held);
        ++m_script->stops;
        m_mainQueue.post([done = std::move(done)] { done({}); });
    }

private:
    std::shared_ptr<MicrophoneScript> m_script;
    Executor& m_mainQueue;
};

} // namespace keldra
