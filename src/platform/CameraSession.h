#pragma once

#include "base/Executor.h"
#include "base/Result.h"
#include "imaging/PixelBuffer.h"

#include <QString>

#include <functional>
#include <memory>

namespace keldra {

/// One camera at a time.
///
/// Threads: main; frames arrive on `queue`; completions run once, on main, never before the call returns, in the order
///          of the calls.
/// Space:   frames are BGRA in the camera's own size, top row first, mirrored.
class CameraSession {
public:
    using FrameHandler = std::function<void(PixelBuffer)>;

    virtual ~CameraSession() = default;
    /// Sets up for that device. Errors: the device is gone or refuses.
    virtual void configure(const QString& deviceID, Executor& queue, FrameHandler frames, Completion<void> done) = 0;
    /// Of what was set up last; does nothing while running. Answers whether frames come.
    virtual void start(Completion<bool> done) = 0;
    /// No frame is delivered after `done` has run.
    virtual void stop(Completion<void> done) = 0;
};

using CameraSessionFactory = std::function<std::unique_ptr<CameraSession>()>;

} // namespace keldra
