#pragma once

#include "capture_ui/ShownPointerEffects.h"
#include "recording/PointerEffectsMonitor.h"
#include "ui_kit/Overlay.h"

#include <functional>
#include <memory>

namespace keldra {

/// The pointer's effects on an overlay of their own.
class CursorEffectsOverlayView final : public OverlayView {
public:
    /// `pointerEffects` must outlive the view.
    CursorEffectsOverlayView(const PointerEffectsMonitor& pointerEffects, std::function<void()> desktopChanged);

    /// Shows itself over that part of the desktop, anew if it is shown already.
    void open(Overlays& overlays, const QRectF& frame);
    /// Sixty times a second: repaints where the effects have changed.
    void refresh(bool isPaused);

    void paint(QPainter& painter, const ViewSpace& space) override;
    QPainterPath shape(const ViewSpace& space) const override;
    void desktopChanged() override;

private:
    const PointerEffectsMonitor& m_pointerEffects;
    const std::function<void()> m_desktopChanged;
    ShownPointerEffects m_effects;
    bool m_isTranslucent = true;
    std::unique_ptr<Overlay> m_overlay;
};

} // namespace keldra
