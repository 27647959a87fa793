#include "ui_kit/SymbolImage.h"

#include "base/Log.h"

#include <QPainter>
#include <QSvgRenderer>

namespace keldra {
namespace {

const QString folder = QStringLiteral(":/icons/");

} // namespace

QImage symbolImage(const QString& name, QSize pixels, const QColor& color) {
    if (name.isEmpty() || pixels.isEmpty())
        return {};
    QSvgRenderer drawing(folder + name + QStringLiteral(".svg"));
    if (!drawing.isValid()) {
        logLine("[KELDRA UI]", "no such symbol: " + name.toStdString());
        return {};
    }
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter, QRectF(QPointF(), QSizeF(pixels)));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

} // namespace keldra
