#include "capture_ui/DesktopCursorEffectsOverlayCoordinator.h"

#include "capture_ui/CursorEffectsOverlayView.h"
#include "ui_kit/DesktopCoordinates.h"

#include <utility>

namespace keldra {
namespace {

constexpr Duration refreshInterval = Duration(std::chrono::seconds(1)) / 60;

} // namespace

DesktopCursorEffectsOverlayCoordinator::DesktopCursorEffectsOverlayCoordinator(Parts parts)
    : m_parts(std::move(parts)) {}

DesktopCursorEffectsOverlayCoordinator::~DesktopCursorEffectsOverlayCoordinator() = default;

void DesktopCursorEffectsOverlayCoordinator::show() {
    if (m_view)
        return;
    m_view = std::make_unique<CursorEffectsOverlayView>(m_parts.pointerEffects, [this] {
        // In a later turn: it is the overlay that tells.
        m_covering = m_parts.scheduler.after(Duration::zero(), [this] { cover(); });
    });
    cover();
    m_refreshing = m_parts.scheduler.every(refreshInterval, [this] { m_view->refresh(m_isPaused); });
}

void DesktopCursorEffectsOverlayCoordinator::cover() {
    m_view->open(m_parts.overlays, unionOfFrames(m_parts.screens->screens()));
}

void DesktopCursorEffectsOverlayCoordinator::drop() {
    m_refreshing.cancel();
    m_covering.cancel();
    m_view.reset();
}

void DesktopCursorEffectsOverlayCoordinator::setPaused(bool isPaused) {
    m_isPaused = isPaused;
    if (m_view)
        m_view->refresh(isPaused);
}

} // namespace keldra
