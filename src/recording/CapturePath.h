#pragma once

#include "platform/Platform.h"

namespace keldra {

/// How a recording gets its pictures.
enum class CapturePath {
    stream,  ///< a stream of the source without our own windows; bubble, effects and clicks are put in as it runs
    display, ///< the display as it is, with our windows on it; clicks are mixed in afterwards
};

/// Streams where the desktop has them. KELDRA_CAPTURE=stream or display in the environment forces one.
CapturePath capturePathOf(const Platform& platform);

} // namespace keldra
