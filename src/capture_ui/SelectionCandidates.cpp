#include "capture_ui/SelectionCandidates.h"

namespace keldra {
namespace {

/// A window must be larger than this, in points.
constexpr double tooNarrow = 120;
constexpr double tooLow = 80;

bool canBePicked(const WindowInfo& window) {
    return !window.isOwn && window.layer == 0 && window.alpha > 0 && window.frame.width() > tooNarrow &&
           window.frame.height() > tooLow;
}

} // namespace

QList<WindowCandidate> windowCandidates(const QList<WindowInfo>& windows) {
    QList<WindowCandidate> candidates;
    for (const WindowInfo& window : windows)
        if (canBePicked(window))
            candidates.append({window.windowID, window.frame, window.title.isEmpty() ? window.owner : window.title});
    return candidates;
}

bool holdsPixel(const QRectF& rect, QPointF corner) {
    return corner.x() >= rect.x() && corner.x() < rect.x() + rect.width() && corner.y() > rect.y() &&
           corner.y() <= rect.y() + rect.height();
}

std::optional<WindowCandidate> windowAt(const QList<WindowCandidate>& windows, QPointF corner) {
    for (const WindowCandidate& window : windows)
        if (holdsPixel(window.bounds, corner))
            return window;
    return std::nullopt;
}

std::optional<Screen> screenAt(const QList<Screen>& screens, QPointF corner) {
    for (const Screen& screen : screens)
        if (holdsPixel(screen.frame, corner))
            return screen;
    return std::nullopt;
}

} // namespace keldra
