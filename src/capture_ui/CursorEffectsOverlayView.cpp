#include "capture_ui/CursorEffectsOverlayView.h"

#include <utility>

namespace keldra {

CursorEffectsOverlayView::CursorEffectsOverlayView(const PointerEffectsMonitor& pointerEffects,
                                                   std::function<void()> desktopChanged)
    : m_pointerEffects(pointerEffects), m_desktopChanged(std::move(desktopChanged)) {}

void CursorEffectsOverlayView::open(Overlays& overlays, const QRectF& frame) {
    m_isTranslucent = overlays.areTranslucent();
    OverlayOptions options;
    options.identifier = QStringLiteral("cursor-effects-overlay");
    options.frame = frame;
    options.letsClicksThrough = true;
    m_overlay = overlays.make(options, *this);
    m_overlay->orderFront();
}

void CursorEffectsOverlayView::refresh(bool isPaused) {
    for (const QRectF& part : m_effects.update(isPaused ? PointerEffectsSnapshot() : m_pointerEffects.snapshot()))
        m_overlay->repaint(part);
}

void CursorEffectsOverlayView::paint(QPainter& painter, const ViewSpace& space) {
    if (m_isTranslucent)
        m_effects.paint(painter, space);
    else
        m_effects.paintOutlines(painter, space);
}

QPainterPath CursorEffectsOverlayView::shape(const ViewSpace& space) const {
    return m_effects.outlines(space);
}

void CursorEffectsOverlayView::desktopChanged() {
    m_desktopChanged();
}

} // namespace keldra
