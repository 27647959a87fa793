#pragma once

#include <QRectF>
#include <QString>

#include <optional>

namespace keldra {

/// Where words stand on selection overlays, in desktop points (y up).

/// E.g. "640 x 480", rounded.
QString sizeLabelText(const QRectF& selected);

/// The pill of the size label for a text of that width: below the selected rectangle, or within its lower edge where
/// there is no room; nothing when the rectangle is too small to be labelled.
std::optional<QRectF> sizeLabelPill(const QRectF& selected, double textWidth, const QRectF& bounds);

/// The pill of the instruction, in the middle of the screen.
QRectF instructionPill(const QRectF& screen, double firstLineWidth, double secondLineWidth);

/// The pill of a display's name, where no instruction covers it.
QRectF displayNamePill(const QRectF& screen, double textWidth);

} // namespace keldra
