#pragma once

#include "base/Executor.h"
#include "base/MediaTime.h"
#include "base/Result.h"
#include "imaging/PixelBuffer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <variant>

namespace keldra {

/// A display without our own windows.
struct DisplaySource {
    std::uint32_t displayID = 0;
    /// When the display gets another size: whether it keeps its scale and upper left corner, cut or with black beside
    /// it. Otherwise it is fitted in.
    bool keepsScale = false;
};

/// One window with its decoration, wherever it is and whatever covers it.
struct WindowSource {
    std::uint32_t windowID = 0;
};

struct StreamConfiguration {
    std::variant<DisplaySource, WindowSource> source;
    /// Size of the frames, in pixels. A source of another size is fitted in, aspect kept, with black bars.
    int width = 0;
    int height = 0;
    Duration minimumFrameInterval{};
    bool showsCursor = true;
    /// Frames that may be held by the receiver at once; beyond that the newest is dropped.
    int queueDepth = 6;
};

struct ScreenFrame {
    /// BGRA of the configured size.
    PixelBuffer pixels;
    /// When the picture was taken.
    MediaTime time;
};

struct FrameSink {
    std::function<void(ScreenFrame)> frame;
    /// At most once: the source is gone or the desktop broke off.
    std::function<void(Error)> stopped;
};

/// Delivers the frames of one picked source while it changes: a whole one at the start, then one whenever the picture,
/// the pointer or its shape has changed, at most at the asked rate.
///
/// Threads: start and stop on main; frames and `stopped` arrive on `queue`; completions run once, on main, never before
///          the call returns.
/// Space:   frames are in pixels of the source, top row first.
/// Time:    HostClock; never goes back.
/// Errors:  start() answers with the reason; a stream that dies later calls the sink's `stopped` once.
class ScreenStream {
public:
    virtual ~ScreenStream() = default;
    virtual void start(StreamConfiguration configuration, Executor& queue, FrameSink sink, Completion<void> done) = 0;
    /// No frame is delivered after `done` has run.
    virtual void stop(Completion<void> done) = 0;
};

using ScreenStreamFactory = std::function<std::unique_ptr<ScreenStream>()>;

} // namespace keldra
