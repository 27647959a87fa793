#pragma once

#include "capture_ui/PreviewInteraction.h"
#include "ui_kit/Overlay.h"

#include <functional>
#include <memory>
#include <optional>

namespace keldra {

/// What will be recorded, clear of the dimmed rest. Where nothing can be dimmed only border, handles and label are
/// there, so that the desktop below stays in sight and at hand; the label then is a grip to move the region by.
class SelectionPreviewView final : public OverlayView {
public:
    enum class Mode { passive, editable };

    struct Events {
        /// At the end of every click and drag while editable, with the region in desktop points.
        std::function<void(QRectF)> regionChanged;
        std::function<void()> desktopChanged;
    };

    SelectionPreviewView(const QRectF& selected, const QRectF& bounds, Mode mode, Events events);
    void open(Overlays& overlays);
    /// Whether an overlay made now would be no other than this one.
    bool fits(const Overlays& overlays, const QRectF& bounds, Mode mode) const;
    /// Shows another selection in the same place; a drag under way ends.
    void replace(const QRectF& selected, Events events);

    void paint(QPainter& painter, const ViewSpace& space) override;
    QPainterPath shape(const ViewSpace& space) const override;
    void mousePressed(QPointF point) override;
    void mouseMoved(QPointF point) override;
    void mouseReleased(QPointF point) override;
    void desktopChanged() override;

private:
    PreviewDrag dragAt(QPointF point) const;
    std::optional<QRectF> labelPill() const;
    /// The selected rectangle with all that is drawn around it.
    QRectF decorated() const;
    void paintBand(QPainter& painter, const QRectF& selected) const;

    const QRectF m_bounds;
    const Mode m_mode;
    Events m_events;
    PreviewInteraction m_interaction;
    bool m_isTranslucent = true;
    std::unique_ptr<Overlay> m_overlay;
};

/// The pointer that tells what a drag would do.
Qt::CursorShape cursorFor(PreviewDrag drag);

} // namespace keldra
