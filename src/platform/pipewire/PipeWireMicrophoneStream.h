#pragma once

#include "platform/MicrophoneStream.h"

#include <memory>

namespace keldra {

/// A microphone of this session's PipeWire, on the host clock: what it hears is continuous at 48 kHz however fast its
/// own clock runs, in signed 24 bits and one or two channels. A device that comes back is heard again.
///
/// Threads: PipeWire's own puts blocks into a ring; a thread of the stream's corrects the clock.
class PipeWireMicrophoneStream final : public MicrophoneStream {
public:
    /// `mainQueue` must outlive it.
    explicit PipeWireMicrophoneStream(Executor& mainQueue);
    ~PipeWireMicrophoneStream() override;

    void start(const QString& deviceID, Executor& queue, BufferHandler buffers, Completion<AudioFormat> done) override;
    void stop(Completion<void> done) override;

private:
    class Session;

    Executor& m_mainQueue;
    Executor* m_queue = nullptr;
    std::shared_ptr<Session> m_session;
};

} // namespace keldra
