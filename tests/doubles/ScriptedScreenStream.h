#pragma once

#include "platform/ScreenStream.h"

#include <memory>
#include <optional>

namespace keldra {

/// What a test sees and steers of a ScriptedScreenStream; outlives the stream.
struct ScreenStreamScript {
    std::optional<Error> startError;
    /// Comes before the start has answered.
    std::optional<ScreenFrame> earlyFrame;
    std::optional<Error> stopError;
    std::optional<StreamConfiguration> configuration;
    int stops = 0;

    /// Delivers as the real stream does: through the queue, and not after the stop.
    void deliver(ScreenFrame frame) {
        if (m_queue && stops == 0)
            m_queue->post([sink = m_sink, frame = std::move(frame)] { sink.frame(frame); });
    }
    void die(Error error) {
        if (m_queue)
            m_queue->post([sink = m_sink, error = std::move(error)] { sink.stopped(error); });
    }

private:
    friend class ScriptedScreenStream;
    Executor* m_queue = nullptr;
    FrameSink m_sink;
};

/// A screen stream whose frames come from a test.
class ScriptedScreenStream final : public ScreenStream {
public:
    ScriptedScreenStream(std::shared_ptr<ScreenStreamScript> script, Executor& mainQueue)
        : m_script(std::move(script)), m_mainQueue(mainQueue) {}

    void start(StreamConfiguration configuration, Executor& queue, FrameSink sink, Completion<void> done) override {
        m_script->configuration = configuration;
        m_script->m_queue = &queue;
        m_script->m_sink = std::move(sink);
        if (m_script->earlyFrame)
            m_script->deliver(*m_script->earlyFrame);
        answer(m_script->startError, std::move(done));
    }
    void stop(Completion<void> done) override {
        ++m_script->stops;
        answer(m_script->stopError, std::move(done));
    }

private:
    void answer(const std::optional<Error>& error, Completion<void> done) {
        m_mainQueue.post(
            [error, done = std::move(done)] { done(error ? Result<void>(fail(*error)) : Result<void>()); });
    }

    std::shared_ptr<ScreenStreamScript> m_script;
    Executor& m_mainQueue;
};

} // namespace keldra
