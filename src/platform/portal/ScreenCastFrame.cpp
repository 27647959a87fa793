#include "platform/portal/ScreenCastFrame.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstdint>

namespace keldra {
namespace {

bool isWithinOne(int side, int wanted) {
    return side == wanted || side == wanted + 1;
}

/// Where a picture of another size goes: in the middle, as large as it fits.
QRectF fitted(QSizeF picture, QSizeF target) {
    const QSizeF size = picture.scaled(target, Qt::KeepAspectRatio);
    return {QPointF((target.width() - size.width()) / 2, (target.height() - size.height()) / 2), size};
}

} // namespace

void copyScreenCastPicture(const ScreenCastPicture& picture, PixelBuffer& target) {
    const QImage source(picture.data, picture.width, picture.height, picture.strideBytes,
                        picture.isRedFirst ? QImage::Format_RGBX8888 : QImage::Format_RGB32);
    QImage frame(target.mutableRow(0, 0), target.width(), target.height(), target.strideBytes(), QImage::Format_RGB32);
    QPainter painter(&frame);
    if (isWithinOne(picture.width, target.width()) && isWithinOne(picture.height, target.height())) {
        painter.drawImage(QPoint(), source);
    } else {
        painter.fillRect(frame.rect(), Qt::black);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(fitted(source.size(), frame.size()), source);
    }
    painter.end();
    // The fourth byte of such pictures may be anything.
    for (int y = 0; y < target.height(); ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(target.mutableRow(0, y));
        std::transform(row, row + target.width(), row, [](std::uint32_t pixel) { return pixel | 0xff000000U; });
    }
}

} // namespace keldra
