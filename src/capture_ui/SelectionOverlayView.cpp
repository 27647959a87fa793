#include "capture_ui/SelectionOverlayView.h"

#include "capture_ui/SelectionGeometry.h"

#include <QCoreApplication>

#include <utility>

namespace keldra {
namespace {

/// Words of the selection overlay.
struct Words {
    Q_DECLARE_TR_FUNCTIONS(SelectionOverlay)
};

/// The size label below the rectangle, and what sticks out of it.
constexpr double decorationReach = 40;

} // namespace

Instruction selectionInstruction(CaptureMode mode) {
    switch (mode) {
    case CaptureMode::region:
        return {Words::tr("Select an area of the screen"), Words::tr("Drag to select · Esc to cancel")};
    case CaptureMode::window:
        return {Words::tr("No window has been selected yet."),
                Words::tr("Click a window to select it · Esc to cancel")};
    case CaptureMode::display:
        break;
    }
    return {Words::tr("Select a screen"), Words::tr("Click to select · Esc to cancel")};
}

SelectionOverlayView::SelectionOverlayView(SelectionInteraction interaction,
                                           const PointerEffectsMonitor& pointerEffects, Ended ended)
    : m_interaction(std::move(interaction)), m_pointerEffects(pointerEffects), m_ended(std::move(ended)) {}

void SelectionOverlayView::open(Overlays& overlays, const OverlayOptions& options) {
    m_bounds = options.frame;
    m_overlay = overlays.make(options, *this);
    m_overlay->setCursor(m_interaction.mode() == CaptureMode::display ? Qt::ArrowCursor : Qt::CrossCursor);
    m_overlay->orderFront();
}

void SelectionOverlayView::refreshEffects() {
    for (const QRectF& part : m_effects.update(m_pointerEffects.snapshot()))
        m_overlay->repaint(part);
}

void SelectionOverlayView::mousePressed(QPointF point) {
    const auto before = markedRect();
    const bool hadBegun = m_interaction.hasBegun();
    m_interaction.press(point);
    if (m_interaction.hasBegun() != hadBegun)
        // The instruction goes.
        m_overlay->repaint(m_bounds);
    changed(before);
}

void SelectionOverlayView::mouseMoved(QPointF point) {
    const auto before = markedRect();
    m_interaction.move(point);
    changed(before);
}

void SelectionOverlayView::mouseReleased(QPointF point) {
    const auto before = markedRect();
    m_interaction.release(point);
    changed(before);
}

void SelectionOverlayView::keyPressed(int key) {
    if (key != Qt::Key_Escape)
        return;
    m_interaction.cancel();
    endIfOver();
}

void SelectionOverlayView::desktopChanged() {
    // What was to be picked from is no longer what there is.
    m_interaction.cancel();
    endIfOver();
}

void SelectionOverlayView::changed(const std::optional<QRectF>& before) {
    const auto now = markedRect();
    if (now != before) {
        if (before)
            m_overlay->repaint(withDecoration(*before));
        if (now)
            m_overlay->repaint(withDecoration(*now));
    }
    endIfOver();
}

void SelectionOverlayView::endIfOver() {
    if (m_interaction.phase() != SelectionInteraction::Phase::underWay)
        if (const Ended ended = std::exchange(m_ended, nullptr))
            ended(m_interaction.selection());
}

std::optional<QRectF> SelectionOverlayView::markedRect() const {
    switch (m_interaction.mode()) {
    case CaptureMode::region:
        return m_interaction.draggedRegion();
    case CaptureMode::window:
        if (const auto& window = m_interaction.highlightedWindow())
            return window->bounds;
        break;
    case CaptureMode::display:
        if (const auto& display = m_interaction.highlightedDisplay())
            return display->frame;
        break;
    }
    return std::nullopt;
}

QRectF SelectionOverlayView::withDecoration(const QRectF& rect) const {
    // A label of a narrow rectangle is wider than it.
    return rect.adjusted(-decorationReach, -decorationReach, decorationReach, decorationReach);
}

void SelectionOverlayView::paint(QPainter& painter, const ViewSpace& space) {
    if (m_interaction.mode() == CaptureMode::display)
        paintDisplays(painter, space);
    else
        paintSelection(painter, space);
    m_effects.paint(painter, space);
    paintInstruction(painter, space);
}

void SelectionOverlayView::paintSelection(QPainter& painter, const ViewSpace& space) const {
    const QRectF bounds = space.toView(m_bounds);
    const std::optional<QRectF> marked = markedRect();
    if (!marked)
        return drawDim(painter, bounds);
    const QRectF selected = space.toView(*marked);
    drawDim(painter, bounds, selected & bounds);
    drawSelectionBorder(painter, selected, BorderLine::solid);
    if (m_interaction.mode() != CaptureMode::region)
        return;
    drawCornerHandles(painter, selected);
    const QString text = sizeLabelText(*marked);
    if (const auto pill = sizeLabelPill(*marked, sizeLabelTextWidth(text), m_bounds))
        drawSizeLabel(painter, space.toView(*pill), text);
}

void SelectionOverlayView::paintDisplays(QPainter& painter, const ViewSpace& space) const {
    drawDim(painter, space.toView(m_bounds));
    for (const Screen& screen : m_interaction.scene().screens) {
        const QRectF pill = displayNamePill(screen.frame, displayNameTextWidth(screen.name));
        drawDisplay(painter, space.toView(screen.frame), space.toView(pill), screen.name,
                    screen == m_interaction.highlightedDisplay());
    }
}

void SelectionOverlayView::paintInstruction(QPainter& painter, const ViewSpace& space) const {
    if (m_interaction.mode() == CaptureMode::region && m_interaction.hasBegun())
        return;
    const Instruction instruction = selectionInstruction(m_interaction.mode());
    const QSizeF widths = instructionTextWidths(instruction);
    // The first screen is the main one.
    const QRectF pill = instructionPill(m_interaction.scene().screens.front().frame, widths.width(), widths.height());
    drawInstruction(painter, space.toView(pill), instruction);
}

} // namespace keldra
