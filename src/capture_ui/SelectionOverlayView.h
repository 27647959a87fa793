#pragma once

#include "capture_ui/SelectionDrawing.h"
#include "capture_ui/SelectionInteraction.h"
#include "capture_ui/ShownPointerEffects.h"
#include "recording/PointerEffectsMonitor.h"
#include "ui_kit/Overlay.h"

#include <functional>
#include <memory>

namespace keldra {

/// What a selection looks like while it lasts, with the pointer's effects above it.
class SelectionOverlayView final : public OverlayView {
public:
    using Ended = std::function<void(std::optional<CaptureSelection>)>;

    /// `ended` runs once, within the event that ends the selection. `pointerEffects` must outlive the view.
    SelectionOverlayView(SelectionInteraction interaction, const PointerEffectsMonitor& pointerEffects, Ended ended);

    /// Shows itself there, which is what the view covers.
    void open(Overlays& overlays, const OverlayOptions& options);
    /// Sixty times a second: repaints where the effects have changed.
    void refreshEffects();

    void paint(QPainter& painter, const ViewSpace& space) override;
    void mousePressed(QPointF point) override;
    void mouseMoved(QPointF point) override;
    void mouseReleased(QPointF point) override;
    void keyPressed(int key) override;
    void desktopChanged() override;

private:
    void changed(const std::optional<QRectF>& before);
    /// What is marked as picked, desktop points; with what is drawn around it.
    std::optional<QRectF> markedRect() const;
    QRectF withDecoration(const QRectF& rect) const;
    void endIfOver();
    void paintSelection(QPainter& painter, const ViewSpace& space) const;
    void paintDisplays(QPainter& painter, const ViewSpace& space) const;
    void paintInstruction(QPainter& painter, const ViewSpace& space) const;

    SelectionInteraction m_interaction;
    const PointerEffectsMonitor& m_pointerEffects;
    Ended m_ended;
    QRectF m_bounds;
    ShownPointerEffects m_effects;
    std::unique_ptr<Overlay> m_overlay;
};

/// What the user is told to do.
Instruction selectionInstruction(CaptureMode mode);

} // namespace keldra
