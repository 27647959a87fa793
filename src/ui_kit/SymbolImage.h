#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

namespace keldra {

/// One of the program's own symbols, drawn for exactly that size in pixels. No image for an unknown name or an empty
/// size.
QImage symbolImage(const QString& name, QSize pixels, const QColor& color);

} // namespace keldra
