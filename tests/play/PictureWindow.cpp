#include "PictureWindow.h"

#include "imaging/Convert.h"

#include <QImage>
#include <QPainter>

namespace keldra::play {

void PictureWindow::show(const PixelBuffer& picture) {
    if (!m_shown || m_shown.width() != picture.width() || m_shown.height() != picture.height())
        m_shown = PixelBuffer::allocate(PixelFormat::bgra, picture.width(), picture.height());
    convertI420ToBgra(picture, m_shown);
    update();
}

void PictureWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect whole(QPoint(), size());
    painter.fillRect(whole, Qt::black);
    if (!m_shown)
        return;
    const QImage image(m_shown.data(), m_shown.width(), m_shown.height(), m_shown.strideBytes(), QImage::Format_RGB32);
    QRect fitted(QPoint(), image.size().scaled(size(), Qt::KeepAspectRatio));
    fitted.moveCenter(whole.center());
    painter.drawImage(fitted, image);
}

} // namespace keldra::play
