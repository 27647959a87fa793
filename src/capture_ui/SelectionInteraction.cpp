#include "capture_ui/SelectionInteraction.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace keldra {
namespace {

/// A drag that spans no more than this, in points, either way is a slip of the hand.
constexpr double slip = 18;

} // namespace

QRectF spannedRect(QPointF a, QPointF b) {
    return {std::min(a.x(), b.x()), std::min(a.y(), b.y()), std::abs(a.x() - b.x()), std::abs(a.y() - b.y())};
}

SelectionInteraction::SelectionInteraction(CaptureMode mode, SelectionScene scene, std::uint32_t preferredDisplayID)
    : m_mode(mode), m_scene(std::move(scene)) {
    if (mode != CaptureMode::display)
        return;
    m_highlightedDisplay = findScreen(m_scene.screens, preferredDisplayID);
    if (!m_highlightedDisplay && !m_scene.screens.isEmpty())
        m_highlightedDisplay = m_scene.screens.front();
}

void SelectionInteraction::press(QPointF point) {
    if (m_phase != Phase::underWay)
        return;
    switch (m_mode) {
    case CaptureMode::region:
        m_startPoint = m_currentPoint = point;
        break;
    case CaptureMode::window:
        pickWindow(point);
        break;
    case CaptureMode::display:
        pickDisplay(point);
        break;
    }
}

void SelectionInteraction::move(QPointF point) {
    if (m_phase != Phase::underWay)
        return;
    switch (m_mode) {
    case CaptureMode::region:
        m_currentPoint = point;
        break;
    case CaptureMode::window:
        m_highlightedWindow = windowAt(m_scene.windows, point);
        break;
    case CaptureMode::display:
        m_highlightedDisplay = screenAt(m_scene.screens, point);
        break;
    }
}

void SelectionInteraction::release(QPointF point) {
    // The button may have been down before the selection began.
    if (m_phase != Phase::underWay || !m_startPoint)
        return;
    m_currentPoint = point;
    pickRegion();
}

void SelectionInteraction::cancel() {
    if (m_phase == Phase::underWay)
        m_phase = Phase::cancelled;
}

std::optional<QRectF> SelectionInteraction::draggedRegion() const {
    if (!m_startPoint)
        return std::nullopt;
    const QRectF rect = spannedRect(*m_startPoint, m_currentPoint);
    return rect.width() > slip && rect.height() > slip ? std::optional(rect) : std::nullopt;
}

void SelectionInteraction::complete(CaptureSelection selection) {
    m_selection = std::move(selection);
    m_phase = Phase::completed;
}

void SelectionInteraction::pickRegion() {
    const std::optional<QRectF> region = draggedRegion();
    const std::optional<Screen> screen = region ? screenAt(m_scene.screens, region->center()) : std::nullopt;
    if (screen)
        complete(RegionSelection{screen->number, *region});
    else
        cancel();
}

void SelectionInteraction::pickWindow(QPointF point) {
    const std::optional<WindowCandidate> window = windowAt(m_scene.windows, point);
    const std::optional<Screen> screen = window ? screenAt(m_scene.screens, window->bounds.center()) : std::nullopt;
    if (screen)
        complete(WindowSelection{screen->number, window->windowID, window->bounds, window->title});
    else
        cancel();
}

void SelectionInteraction::pickDisplay(QPointF point) {
    // Displays tile the desktop, and a miss can only be a gap.
    if (const std::optional<Screen> screen = screenAt(m_scene.screens, point))
        complete(DisplaySelection{screen->number, screen->name});
}

} // namespace keldra
