#pragma once

#include "base/Error.h"

#include <string>

namespace keldra {

/// Errors of the X11 adapters; domain "X11".
enum class X11ErrorCode {
    noDisplay = 1,
    missingExtension,
    connectionLost,
    requestFailed,
    unknownDisplay,
    unknownWindow,
    windowClosed,
    displayDisconnected,
    alreadyRunning,
};

inline Error x11Error(X11ErrorCode code, std::string message) {
    return {"X11", int(code), std::move(message), {}};
}

} // namespace keldra
