#include "capture_ui/SelectionPreviewView.h"

#include "capture_ui/SelectionCandidates.h"
#include "capture_ui/SelectionDrawing.h"
#include "capture_ui/SelectionGeometry.h"
#include "ui_kit/Palette.h"

#include <QPainter>

#include <utility>

namespace keldra {
namespace {

/// The border where it alone is there: a hand can take hold of it, and it leaves the region's pixels but for a few.
constexpr double bandOutside = 2;
constexpr double bandInside = 4;
constexpr double bandLineWidth = 2;

/// The size label, and what sticks out of the rectangle.
constexpr double decorationReach = 40;

QPainterPath bandShape(const QRectF& selected) {
    QPainterPath band;
    band.setFillRule(Qt::OddEvenFill);
    band.addRect(selected.adjusted(-bandOutside, -bandOutside, bandOutside, bandOutside));
    band.addRect(selected.adjusted(bandInside, bandInside, -bandInside, -bandInside));
    return band;
}

} // namespace

Qt::CursorShape cursorFor(PreviewDrag drag) {
    switch (drag) {
    case PreviewDrag::none:
        return Qt::ArrowCursor;
    case PreviewDrag::move:
        return Qt::SizeAllCursor;
    case PreviewDrag::topLeft:
    case PreviewDrag::bottomRight:
        return Qt::SizeFDiagCursor;
    case PreviewDrag::topRight:
    case PreviewDrag::bottomLeft:
        return Qt::SizeBDiagCursor;
    }
    return Qt::ArrowCursor;
}

SelectionPreviewView::SelectionPreviewView(const QRectF& selected, const QRectF& bounds, Mode mode, Events events)
    : m_bounds(bounds), m_mode(mode), m_events(std::move(events)), m_interaction(selected, bounds) {}

void SelectionPreviewView::open(Overlays& overlays) {
    m_isTranslucent = overlays.areTranslucent();
    OverlayOptions options;
    options.identifier = QStringLiteral("selection-preview");
    options.frame = m_bounds;
    options.level = OverlayOptions::Level::belowPanels;
    options.letsClicksThrough = m_mode == Mode::passive;
    m_overlay = overlays.make(options, *this);
    m_overlay->orderFront();
}

bool SelectionPreviewView::fits(const Overlays& overlays, const QRectF& bounds, Mode mode) const {
    return overlays.areTranslucent() == m_isTranslucent && bounds == m_bounds && mode == m_mode;
}

void SelectionPreviewView::replace(const QRectF& selected, Events events) {
    const QRectF before = decorated();
    m_interaction = PreviewInteraction(selected, m_bounds);
    m_events = std::move(events);
    if (decorated() != before)
        m_overlay->repaint(before.united(decorated()));
}

PreviewDrag SelectionPreviewView::dragAt(QPointF point) const {
    const PreviewDrag drag = previewDragAt(m_interaction.region(), point);
    const bool isGrip = !m_isTranslucent && drag == PreviewDrag::none;
    const std::optional<QRectF> pill = isGrip ? labelPill() : std::nullopt;
    return pill && holdsPixel(*pill, point) ? PreviewDrag::move : drag;
}

void SelectionPreviewView::mousePressed(QPointF point) {
    if (m_mode == Mode::editable)
        m_interaction.press(point, dragAt(point));
}

void SelectionPreviewView::mouseMoved(QPointF point) {
    if (m_mode != Mode::editable)
        return;
    if (m_interaction.drag() == PreviewDrag::none)
        return m_overlay->setCursor(cursorFor(dragAt(point)));
    const QRectF before = decorated();
    m_interaction.move(point);
    if (decorated() != before)
        m_overlay->repaint(before.united(decorated()));
}

void SelectionPreviewView::mouseReleased(QPointF point) {
    if (m_mode != Mode::editable)
        return;
    mouseMoved(point);
    m_interaction.release();
    // May destroy this view: nothing of it is touched any more.
    const auto regionChanged = m_events.regionChanged;
    const QRectF region = m_interaction.region();
    regionChanged(region);
}

void SelectionPreviewView::desktopChanged() {
    const auto desktopChanged = m_events.desktopChanged;
    desktopChanged();
}

std::optional<QRectF> SelectionPreviewView::labelPill() const {
    if (m_mode == Mode::passive)
        return std::nullopt;
    const QRectF& region = m_interaction.region();
    return sizeLabelPill(region, sizeLabelTextWidth(sizeLabelText(region)), m_bounds);
}

QRectF SelectionPreviewView::decorated() const {
    return m_interaction.region().adjusted(-decorationReach, -decorationReach, decorationReach, decorationReach);
}

void SelectionPreviewView::paint(QPainter& painter, const ViewSpace& space) {
    const QRectF selected = space.toView(m_interaction.region());
    if (m_isTranslucent) {
        drawDim(painter, space.toView(m_bounds), selected);
        drawSelectionBorder(painter, selected, BorderLine::dashed);
    } else {
        paintBand(painter, selected);
    }
    if (m_mode == Mode::passive)
        return;
    drawCornerHandles(painter, selected);
    if (const auto pill = labelPill())
        drawSizeLabel(painter, space.toView(*pill), sizeLabelText(m_interaction.region()));
}

void SelectionPreviewView::paintBand(QPainter& painter, const QRectF& selected) const {
    // The shape cuts the rest away.
    painter.fillRect(selected.adjusted(-decorationReach, -decorationReach, decorationReach, decorationReach),
                     palette::opaqueGround);
    QPen dashes(Qt::white, bandLineWidth, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    dashes.setDashPattern({4 / bandLineWidth, 4 / bandLineWidth});
    painter.setBrush(Qt::NoBrush);
    painter.setPen(dashes);
    constexpr double middle = (bandInside - bandOutside) / 2;
    painter.drawRect(selected.adjusted(middle, middle, -middle, -middle));
}

QPainterPath SelectionPreviewView::shape(const ViewSpace& space) const {
    const QRectF selected = space.toView(m_interaction.region());
    QPainterPath shape = bandShape(selected);
    if (m_mode == Mode::passive)
        return shape;
    shape = shape.united(cornerHandlesShape(selected));
    if (const auto pill = labelPill())
        shape = shape.united(pillShape(space.toView(*pill)));
    return shape;
}

} // namespace keldra
