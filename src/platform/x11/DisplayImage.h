#pragma once

#include "imaging/PixelBufferPool.h"
#include "platform/DisplayCapture.h"
#include "platform/x11/CursorWatch.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Monitors.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace keldra {

/// What a piece of a display shows, read by core requests. One thread.
class DisplayImage {
public:
    /// Errors: no such display, or a server whose pixels we cannot read.
    static Result<std::unique_ptr<DisplayImage>> open(const DisplayCaptureConfiguration& configuration,
                                                      MonitorNumbers& numbers);

    /// The picture, black beyond the screen; nothing when it is as it was, or no memory is free. Errors: the display is
    /// gone.
    Result<PixelBuffer> readIfChanged();
    /// The next picture counts as changed.
    void forget() { m_lastBytes.clear(); }

private:
    DisplayImage(std::shared_ptr<X11Connection> connection, const DisplayCaptureConfiguration& configuration,
                 MonitorNumbers& numbers);
    Result<void> findMonitor();
    bool readCursorEvents();
    PixelBuffer compose(const std::uint8_t* bytes, const PixelRect& seen, const PixelRect& area);

    std::shared_ptr<X11Connection> m_connection;
    DisplayCaptureConfiguration m_configuration;
    MonitorNumbers& m_numbers;
    std::optional<CursorWatch> m_cursor;
    PixelBufferPool m_pool;
    /// Root pixels.
    PixelRect m_monitor;
    std::chrono::steady_clock::time_point m_monitorAskedAgainAt;
    std::vector<std::uint8_t> m_lastBytes;
    std::optional<QPoint> m_lastPointer;
};

} // namespace keldra
