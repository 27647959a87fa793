#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QString>

class QPainter;

namespace keldra {

/// The look of selection overlays. Everything is in the painter's own coordinates: points, y down.

/// Darkens the bounds but for the hole; an empty hole is none.
void drawDim(QPainter& painter, const QRectF& bounds, const QRectF& hole = {});

enum class BorderLine { solid, dashed };
void drawSelectionBorder(QPainter& painter, const QRectF& selected, BorderLine line);
/// Angles at the corners, outside the rectangle; shorter in a small one.
void drawCornerHandles(QPainter& painter, const QRectF& selected);
/// What those cover, for windows that can only be cut out.
QPainterPath cornerHandlesShape(const QRectF& selected);

/// How far border and handles reach beyond the rectangle.
inline constexpr double borderReach = 6;

double sizeLabelTextWidth(const QString& text);
void drawSizeLabel(QPainter& painter, const QRectF& pill, const QString& text);
QPainterPath pillShape(const QRectF& pill);

struct Instruction {
    QString firstLine;
    QString secondLine;
};
/// Widths of both lines.
QSizeF instructionTextWidths(const Instruction& instruction);
void drawInstruction(QPainter& painter, const QRectF& pill, const Instruction& instruction);

double displayNameTextWidth(const QString& name);
void drawDisplay(QPainter& painter, const QRectF& frame, const QRectF& namePill, const QString& name,
                 bool isHighlighted);

} // namespace keldra
