#pragma once

#include "async/Scheduler.h"
#include "base/HostClock.h"
#include "platform/OwnWindows.h"
#include "platform/Pointer.h"
#include "recording/PointerEffectsSnapshot.h"

#include <QRectF>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace keldra {

/// What the user has switched on. Numbers out of their range are clamped by the monitor.
struct PointerEffectsSettings {
    bool showsClickIndicators = true;
    bool clickSoundEnabled = false;
    bool showsCursorHighlight = false;
    /// 0.5 to 2.
    double clickIndicatorIntensity = 1;
    /// 0.2 to 1.
    double cursorHighlightIntensity = 0.65;
    /// 32 to 80 points.
    double cursorHighlightSize = 48;
    friend bool operator==(const PointerEffectsSettings&, const PointerEffectsSettings&) = default;
};

/// Follows the pointer by polling while anything is switched on: where it is, whether it is pressed, which clicks still
/// ripple, and whether it is over a surface of ours that recordings cannot see. The source of click times.
///
/// Threads: main, but for snapshot() and setOnClickDetected(), which are for any thread.
class PointerEffectsMonitor {
public:
    static constexpr Duration pollInterval = Duration(std::chrono::seconds(1)) / 120;
    static constexpr double rippleDuration = 0.52;
    /// With the click's host time in seconds; on main.
    using OnClick = std::function<void(double)>;

    /// `scheduler` must outlive the monitor.
    PointerEffectsMonitor(std::shared_ptr<Pointer> pointer, std::shared_ptr<OwnWindows> ownWindows,
                          std::shared_ptr<HostClock> clock, Scheduler& scheduler);

    /// Starts the poll, or stops it when nothing is on.
    void updateSettings(const PointerEffectsSettings& settings);
    /// While running, polls once.
    void start();
    void stop();
    bool isRunning() const { return bool(m_pollingTimer); }

    PointerEffectsSnapshot snapshot() const;

    /// From now on click times are kept, and told to whoever set onClickDetected.
    void beginClickCapture();
    /// Ends the capture; seconds since its beginning.
    std::vector<double> takeCapturedClickTimes();
    void setOnClickDetected(OnClick onClick);

private:
    struct StoredRipple {
        QPointF location;
        double startedAt = 0;
    };
    void poll();
    /// Under the lock; answers whether a click is to be told.
    bool noteButtons(bool isDown, QPointF location, double now);
    std::vector<QRectF> readExcludedFrames() const;

    const std::shared_ptr<Pointer> m_pointer;
    const std::shared_ptr<OwnWindows> m_ownWindows;
    const std::shared_ptr<HostClock> m_clock;
    Scheduler& m_scheduler;
    Timer m_pollingTimer;

    mutable std::mutex m_lock;
    PointerEffectsSettings m_settings;
    QPointF m_cursorLocation;
    bool m_isCursorSuppressed = false;
    mutable std::vector<StoredRipple> m_ripples;
    std::vector<QRectF> m_excludedFrames;
    bool m_wasButtonDown = false;
    std::optional<double> m_captureStartedAt;
    std::vector<double> m_capturedTimes;
    OnClick m_onClick;
};

} // namespace keldra
