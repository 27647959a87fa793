#include "capture_ui/CountdownView.h"

#include "ui_kit/Palette.h"

#include <QEasingCurve>
#include <QFont>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace keldra {
namespace {

constexpr int numberSize = 120;
/// Drawn around the strokes of a plain font, which makes them heavier and rounds their corners.
constexpr double roundingWidth = 7;
/// Around the middle, more than anything that is drawn.
constexpr double reach = 150;
/// Of the disc that the number stands on where nothing shines through.
constexpr double discRadius = 110;

constexpr double firstScale = 0.86;

double easedInAndOut(double progress) {
    static const QEasingCurve curve = [] {
        QEasingCurve bezier(QEasingCurve::BezierSpline);
        bezier.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
        return bezier;
    }();
    return curve.valueForProgress(std::clamp(progress, 0.0, 1.0));
}

/// Its middle at the origin.
QPainterPath numberPath(int number) {
    QFont font;
    font.setPixelSize(numberSize);
    font.setWeight(QFont::Medium);
    QPainterPath path;
    path.addText(QPointF(), font, QString::number(number));
    path.translate(-path.boundingRect().center());
    return path;
}

QPen roundPen(const QColor& color, double width) {
    return {color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

/// Lets a white number be read on a white desktop; it fades out towards its edge.
void drawHalo(QPainter& painter, const QPainterPath& path) {
    constexpr int rings = 12;
    for (int ring = rings; ring >= 1; --ring)
        painter.strokePath(path, roundPen(QColor(0, 0, 0, 2 + 2 * (rings - ring)), roundingWidth + ring * 4.0));
}

void drawNumber(QPainter& painter, int number, QPointF centre, double scale, double opacity, bool hasHalo) {
    if (opacity <= 0)
        return;
    const QPainterPath path = numberPath(number);
    painter.save();
    painter.setOpacity(opacity);
    painter.translate(centre);
    painter.scale(scale, scale);
    if (hasHalo)
        drawHalo(painter, path);
    // One shape, so that nothing is painted twice while it is translucent.
    const QPainterPathStroker stroker(roundPen(Qt::white, roundingWidth));
    QPainterPath whole = path.united(stroker.createStroke(path));
    painter.fillPath(whole, Qt::white);
    painter.restore();
}

} // namespace

CountdownLook countdownLook(double secondsSinceTick) {
    const double eased = easedInAndOut(secondsSinceTick / countdownTransition);
    return {eased, firstScale + (1 - firstScale) * eased, 1 - eased};
}

void CountdownView::open(Overlays& overlays, const QRectF& frame) {
    const QPointF centre = frame.center();
    m_frame = overlays.canCover() ? frame : QRectF(centre.x() - reach, centre.y() - reach, 2 * reach, 2 * reach);
    m_isTranslucent = overlays.areTranslucent();
    OverlayOptions options;
    options.identifier = QStringLiteral("countdown");
    options.frame = m_frame;
    options.letsClicksThrough = true;
    m_overlay = overlays.make(options, *this);
    m_overlay->orderFront();
}

void CountdownView::tick(int number) {
    m_leavingNumber = std::exchange(m_number, number);
    m_look = countdownLook(0);
    repaint();
}

void CountdownView::setTimeSinceTick(double seconds) {
    const CountdownLook look = countdownLook(seconds);
    if (std::exchange(m_look, look) != look)
        repaint();
}

void CountdownView::repaint() {
    const QPointF centre = m_frame.center();
    m_overlay->repaint({centre.x() - reach, centre.y() - reach, 2 * reach, 2 * reach});
}

void CountdownView::paint(QPainter& painter, const ViewSpace& space) {
    const QPointF centre = space.toView(m_frame.center());
    if (!m_isTranslucent)
        painter.fillRect(QRectF(centre.x() - reach, centre.y() - reach, 2 * reach, 2 * reach), palette::opaqueGround);
    if (m_leavingNumber)
        drawNumber(painter, *m_leavingNumber, centre, 1, m_look.leavingOpacity, m_isTranslucent);
    if (m_number)
        drawNumber(painter, *m_number, centre, m_look.scale, m_look.opacity, m_isTranslucent);
}

QPainterPath CountdownView::shape(const ViewSpace& space) const {
    QPainterPath disc;
    disc.addEllipse(space.toView(m_frame.center()), discRadius, discRadius);
    return disc;
}

} // namespace keldra
