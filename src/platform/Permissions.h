#pragma once

#include "base/Result.h"

namespace keldra {

/// What the desktop lets this program do; for cameras and microphones CaptureDevices knows. Main thread.
class Permissions {
public:
    virtual ~Permissions() = default;
    /// Whether the screen may be recorded, without asking anybody.
    virtual bool hasScreenCapture() const = 0;
    /// Asks the user where the answer is open; answers on main whether the screen may be recorded.
    virtual void requestScreenCapture(Completion<bool> done) = 0;
};

} // namespace keldra
