#include "ui_kit/Symbol.h"

#include "ui_kit/SymbolImage.h"

#include <QPainter>
#include <QQuickWindow>

namespace keldra {

Symbol::Symbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setImplicitSize(20, 20);
    setAntialiasing(true);
}

void Symbol::setName(const QString& name) {
    if (m_name == name)
        return;
    m_name = name;
    update();
    Q_EMIT nameChanged();
}

void Symbol::setColor(const QColor& color) {
    if (m_color == color)
        return;
    m_color = color;
    update();
    Q_EMIT colorChanged();
}

void Symbol::paint(QPainter* painter) {
    const double scale = window() ? window()->effectiveDevicePixelRatio() : 1;
    const QImage image = symbolImage(m_name, (size() * scale).toSize(), m_color);
    if (!image.isNull())
        painter->drawImage(QRectF(QPointF(), size()), image);
}

} // namespace keldra
