#include "capture_ui/CameraPreview.h"

#include <QPainter>
#include <QQuickWindow>

namespace keldra {

CameraPreview::CameraPreview(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setOpaquePainting(false);
}

void CameraPreview::setFeed(CameraPreviewFeed* feed) {
    if (m_feed == feed)
        return;
    if (m_feed)
        m_feed->disconnect(this);
    m_feed = feed;
    if (m_feed)
        connect(m_feed, &CameraPreviewFeed::pictureChanged, this, [this] { update(); });
    update();
    Q_EMIT feedChanged();
}

void CameraPreview::setCornerRadius(double radius) {
    if (m_cornerRadius == radius)
        return;
    m_cornerRadius = radius;
    update();
    Q_EMIT cornerRadiusChanged();
}

void CameraPreview::paint(QPainter* painter) {
    if (!m_feed || !m_feed->picture() || m_feed->picture().format() != PixelFormat::bgra)
        return;
    const double scale = window() ? window()->effectiveDevicePixelRatio() : 1;
    const QSize pixels = (size() * scale).toSize();
    if (pixels.isEmpty())
        return;
    if (m_image.size() != pixels)
        m_image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    m_image.fill(Qt::transparent);
    // The bubble draws on our kind of picture; this one lends it the image's memory.
    PixelBuffer target = PixelBuffer::wrap(PixelFormat::bgra, pixels.width(), pixels.height(),
                                           {PixelBuffer::Plane{m_image.bits(), m_image.bytesPerLine()}}, nullptr);
    m_bubble.draw(target, m_feed->picture(), {QRectF(QPointF(), QSizeF(pixels)), m_cornerRadius * scale});
    painter->drawImage(QRectF(QPointF(), size()), m_image);
}

} // namespace keldra
