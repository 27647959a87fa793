#include "capture_ui/SelectionDrawing.h"

#include "ui_kit/Palette.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

constexpr double handleLength = 16;
constexpr double handleWidth = 3;
constexpr double handleRimWidth = 5;
/// From the rectangle's corner to the middle of the handle's line.
constexpr double handleOffset = 2.5;

constexpr double displayInset = 2;
constexpr double displayRadius = 10;

QColor white(double alpha) {
    return QColor::fromRgbF(1, 1, 1, float(alpha));
}

QColor black(double alpha) {
    return QColor::fromRgbF(0, 0, 0, float(alpha));
}

QColor nearBlack(double value, double alpha) {
    return QColor::fromRgbF(float(value), float(value), float(value), float(alpha));
}

QFont font(int size, QFont::Weight weight) {
    QFont font;
    // Points of the desktop, not of typography.
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

QFont sizeLabelFont() {
    return font(11, QFont::Medium);
}

QFont firstLineFont() {
    return font(13, QFont::DemiBold);
}

QFont secondLineFont() {
    return font(11, QFont::Normal);
}

QFont displayNameFont() {
    return font(18, QFont::Medium);
}

double widthOf(const QString& text, const QFont& font) {
    return QFontMetricsF(font).horizontalAdvance(text);
}

/// The widest digit, since digits of most fonts but not all have one width.
double digitWidth(const QFontMetricsF& metrics) {
    double widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

double advanceOf(QChar letter, const QFontMetricsF& metrics) {
    return letter.isDigit() ? digitWidth(metrics) : metrics.horizontalAdvance(letter);
}

QPainterPath handlesPath(const QRectF& selected) {
    const QRectF outer = selected.adjusted(-handleOffset, -handleOffset, handleOffset, handleOffset);
    const double length = std::min({handleLength, outer.width() / 3, outer.height() / 3});
    QPainterPath path;
    const auto angle = [&](QPointF corner, double right, double down) {
        path.moveTo(corner + QPointF(right * length, 0));
        path.lineTo(corner);
        path.lineTo(corner + QPointF(0, down * length));
    };
    angle(outer.topLeft(), 1, 1);
    angle(outer.topRight(), -1, 1);
    angle(outer.bottomRight(), -1, -1);
    angle(outer.bottomLeft(), 1, -1);
    return path;
}

void drawPill(QPainter& painter, const QRectF& pill, double radius) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(nearBlack(0.06, 0.88));
    painter.drawRoundedRect(pill, radius, radius);
    painter.setPen(QPen(white(0.1), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(pill.adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, radius - 0.5);
}

void drawCentred(QPainter& painter, const QRectF& place, const QString& text, const QFont& font, const QColor& color) {
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(place, Qt::AlignCenter | Qt::TextSingleLine, text);
}

} // namespace

void drawDim(QPainter& painter, const QRectF& bounds, const QRectF& hole) {
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    path.addRect(bounds);
    if (!hole.isEmpty())
        path.addRect(hole);
    painter.fillPath(path, nearBlack(0.03, 0.52));
}

void drawSelectionBorder(QPainter& painter, const QRectF& selected, BorderLine line) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(black(0.34), 3, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(selected);
    QPen pen(white(0.96), 1.2, Qt::SolidLine, line == BorderLine::dashed ? Qt::FlatCap : Qt::SquareCap, Qt::MiterJoin);
    if (line == BorderLine::dashed)
        // In units of the pen's width: 4 points each.
        pen.setDashPattern({4 / 1.2, 4 / 1.2});
    painter.setPen(pen);
    painter.drawRect(selected);
}

void drawCornerHandles(QPainter& painter, const QRectF& selected) {
    const QPainterPath path = handlesPath(selected);
    painter.strokePath(path, QPen(black(0.4), handleRimWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.strokePath(path, QPen(palette::accent, handleWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

QPainterPath cornerHandlesShape(const QRectF& selected) {
    QPainterPathStroker stroker(QPen(Qt::black, handleRimWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    return stroker.createStroke(handlesPath(selected)).simplified();
}

double sizeLabelTextWidth(const QString& text) {
    const QFontMetricsF metrics(sizeLabelFont());
    double width = 0;
    for (const QChar letter : text)
        width += advanceOf(letter, metrics);
    return width;
}

void drawSizeLabel(QPainter& painter, const QRectF& pill, const QString& text) {
    drawPill(painter, pill, pill.height() / 2);
    const QFont font = sizeLabelFont();
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    painter.setPen(Qt::white);
    // Each digit in a cell of its own, so that the label keeps still while the number changes.
    double x = pill.center().x() - sizeLabelTextWidth(text) / 2;
    const double baseline = pill.center().y() + metrics.capHeight() / 2;
    for (const QChar letter : text) {
        const double cell = advanceOf(letter, metrics);
        painter.drawText(QPointF(x + (cell - metrics.horizontalAdvance(letter)) / 2, baseline), QString(letter));
        x += cell;
    }
}

QPainterPath pillShape(const QRectF& pill) {
    QPainterPath path;
    path.addRoundedRect(pill, pill.height() / 2, pill.height() / 2);
    return path;
}

QSizeF instructionTextWidths(const Instruction& instruction) {
    return {widthOf(instruction.firstLine, firstLineFont()), widthOf(instruction.secondLine, secondLineFont())};
}

void drawInstruction(QPainter& painter, const QRectF& pill, const Instruction& instruction) {
    drawPill(painter, pill, 13);
    const QRectF upper(pill.x(), pill.y() + 6, pill.width(), 18);
    const QRectF lower(pill.x(), pill.y() + 24, pill.width(), 15);
    drawCentred(painter, upper, instruction.firstLine, firstLineFont(), white(0.96));
    drawCentred(painter, lower, instruction.secondLine, secondLineFont(), white(0.58));
}

double displayNameTextWidth(const QString& name) {
    return widthOf(name, displayNameFont());
}

void drawDisplay(QPainter& painter, const QRectF& frame, const QRectF& namePill, const QString& name,
                 bool isHighlighted) {
    const double lineWidth = isHighlighted ? 3 : 1;
    const double inset = displayInset + lineWidth / 2;
    const QRectF line = frame.adjusted(inset, inset, -inset, -inset);
    painter.setBrush(isHighlighted ? white(0.12) : QColor(Qt::transparent));
    painter.setPen(isHighlighted ? QPen(palette::accent, lineWidth) : QPen(white(0.22), lineWidth));
    painter.drawRoundedRect(line, displayRadius, displayRadius);

    drawPill(painter, namePill, namePill.height() / 2);
    const QString shown =
        QFontMetricsF(displayNameFont()).elidedText(name, Qt::ElideMiddle, std::max(0.0, namePill.width() - 24));
    drawCentred(painter, namePill, shown, displayNameFont(), white(isHighlighted ? 0.96 : 0.7));
}

} // namespace keldra
