#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "media/AudioBuffer.h"

#include <QString>

#include <functional>
#include <memory>

namespace keldra {

/// Delivers what a microphone hears.
///
/// Threads: start and stop on main; buffers arrive on `queue`; completions run once, on main, never before the call
///          returns.
/// Time:    buffers carry the HostClock time of their first frame. A device that is unplugged just falls silent: no
///          more buffers come.
class MicrophoneStream {
public:
    using BufferHandler = std::function<void(AudioBuffer)>;

    virtual ~MicrophoneStream() = default;
    /// Answers with the format of all buffers. Errors: the device is gone or refuses.
    virtual void start(const QString& deviceID, Executor& queue, BufferHandler buffers,
                       Completion<AudioFormat> done) = 0;
    /// No buffer is delivered after `done` has run.
    virtual void stop(Completion<void> done) = 0;
};

using MicrophoneStreamFactory = std::function<std::unique_ptr<MicrophoneStream>()>;

} // namespace keldra
