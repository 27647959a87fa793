#include "recording/PointerEffectsMonitor.h"

#include <algorithm>
#include <utility>

namespace keldra {
namespace {

/// How far an excluded surface reaches beyond its frame, in points.
constexpr double surfaceMargin = 2;
constexpr double leastVisibleAlpha = 0.01;

bool isInside(const std::vector<QRectF>& frames, QPointF location) {
    return std::any_of(frames.begin(), frames.end(), [&](const QRectF& frame) {
        return frame.adjusted(-surfaceMargin, -surfaceMargin, surfaceMargin, surfaceMargin).contains(location);
    });
}

/// The user points at the screen through these.
bool isLookedThrough(const OwnWindow& window) {
    return window.identifier == u"selection-overlay" || window.identifier == u"selection-preview";
}

} // namespace

PointerEffectsMonitor::PointerEffectsMonitor(std::shared_ptr<Pointer> pointer, std::shared_ptr<OwnWindows> ownWindows,
                                             std::shared_ptr<HostClock> clock, Scheduler& scheduler)
    : m_pointer(std::move(pointer))
    , m_ownWindows(std::move(ownWindows))
    , m_clock(std::move(clock))
    , m_scheduler(scheduler)
    , m_cursorLocation(m_pointer->location()) {}

void PointerEffectsMonitor::updateSettings(const PointerEffectsSettings& settings) {
    {
        const std::lock_guard guard(m_lock);
        m_settings = settings;
        m_settings.clickIndicatorIntensity = std::clamp(settings.clickIndicatorIntensity, 0.5, 2.0);
        m_settings.cursorHighlightIntensity = std::clamp(settings.cursorHighlightIntensity, 0.2, 1.0);
        m_settings.cursorHighlightSize = std::clamp(settings.cursorHighlightSize, 32.0, 80.0);
    }
    if (settings.showsClickIndicators || settings.clickSoundEnabled || settings.showsCursorHighlight)
        start();
    else
        stop();
}

void PointerEffectsMonitor::start() {
    const bool wasRunning = isRunning();
    if (!wasRunning)
        // What was pressed while nobody looked is not a click of now.
        (void)m_pointer->takePressedButtons();
    poll();
    if (!wasRunning)
        m_pollingTimer = m_scheduler.every(pollInterval, [this] { poll(); });
}

void PointerEffectsMonitor::stop() {
    m_pollingTimer.cancel();
    const QPointF location = m_pointer->location();
    const std::lock_guard guard(m_lock);
    m_isCursorSuppressed = false;
    m_cursorLocation = location;
    m_ripples.clear();
    m_excludedFrames.clear();
    m_wasButtonDown = false;
}

std::vector<QRectF> PointerEffectsMonitor::readExcludedFrames() const {
    std::vector<QRectF> frames;
    for (const OwnWindow& window : m_ownWindows->windows())
        if (window.isVisible && window.sharingType == SharingType::none && window.alpha > leastVisibleAlpha &&
            !isLookedThrough(window))
            frames.push_back(window.frame);
    return frames;
}

void PointerEffectsMonitor::poll() {
    const QPointF location = m_pointer->location();
    std::vector<QRectF> excluded = readExcludedFrames();
    const double now = m_clock->now().seconds();
    const bool isDown = m_pointer->takePressedButtons() != 0;

    OnClick onClick;
    {
        const std::lock_guard guard(m_lock);
        m_cursorLocation = location;
        m_isCursorSuppressed = isInside(excluded, location);
        m_excludedFrames = std::move(excluded);
        const bool isClickDue = noteButtons(isDown, location, now);
        std::erase_if(m_ripples, [&](const StoredRipple& ripple) {
            return now - ripple.startedAt > rippleDuration || isInside(m_excludedFrames, ripple.location);
        });
        if (isClickDue)
            onClick = m_onClick;
    }
    if (onClick)
        onClick(now);
}

bool PointerEffectsMonitor::noteButtons(bool isDown, QPointF location, double now) {
    const bool isListening = m_settings.showsClickIndicators || m_settings.clickSoundEnabled;
    const bool isClick = isListening && isDown && !m_wasButtonDown && !m_isCursorSuppressed;
    m_wasButtonDown = isDown;
    if (!isClick)
        return false;
    if (m_settings.showsClickIndicators)
        m_ripples.push_back({location, now});
    if (!m_settings.clickSoundEnabled || !m_captureStartedAt)
        return false;
    m_capturedTimes.push_back(now - *m_captureStartedAt);
    return true;
}

PointerEffectsSnapshot PointerEffectsMonitor::snapshot() const {
    const double now = m_clock->now().seconds();
    const std::lock_guard guard(m_lock);
    std::erase_if(m_ripples, [&](const StoredRipple& ripple) { return now - ripple.startedAt > rippleDuration; });

    PointerEffectsSnapshot snapshot;
    snapshot.showsCursorHighlight = m_settings.showsCursorHighlight;
    snapshot.showsClickIndicators = m_settings.showsClickIndicators;
    snapshot.clickIndicatorIntensity = m_settings.clickIndicatorIntensity;
    snapshot.cursorHighlightIntensity = m_settings.cursorHighlightIntensity;
    snapshot.cursorHighlightSize = m_settings.cursorHighlightSize;
    if (!m_isCursorSuppressed)
        snapshot.cursorLocation = m_cursorLocation;
    if (m_settings.showsClickIndicators)
        for (const StoredRipple& ripple : m_ripples)
            snapshot.clickRipples.push_back(
                {ripple.location, std::clamp((now - ripple.startedAt) / rippleDuration, 0.0, 1.0)});
    snapshot.isClickPressActive = m_settings.showsClickIndicators && m_wasButtonDown && !m_isCursorSuppressed;
    return snapshot;
}

void PointerEffectsMonitor::beginClickCapture() {
    const double now = m_clock->now().seconds();
    const std::lock_guard guard(m_lock);
    m_captureStartedAt = now;
    m_capturedTimes.clear();
}

std::vector<double> PointerEffectsMonitor::takeCapturedClickTimes() {
    const std::lock_guard guard(m_lock);
    m_captureStartedAt.reset();
    m_onClick = nullptr;
    return std::exchange(m_capturedTimes, {});
}

void PointerEffectsMonitor::setOnClickDetected(OnClick onClick) {
    const std::lock_guard guard(m_lock);
    m_onClick = std::move(onClick);
}

} // namespace keldra
