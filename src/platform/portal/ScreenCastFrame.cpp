#include "platform/portal/ScreenCastFrame.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstdint>

namespace keldra {

void copyScreenCastPicture(const ScreenCastPicture& picture, const PixelRect& crop, int displayWidth, int displayHeight,
                           PixelBuffer& target) {
    const QImage source(picture.data, picture.width, picture.height, picture.strideBytes,
                        picture.isRedFirst ? QImage::Format_RGBX8888 : QImage::Format_RGB32);
    QImage frame(target.mutableRow(0, 0), target.width(), target.height(), target.strideBytes(), QImage::Format_RGB32);
    frame.fill(Qt::black);
    const double across = double(picture.width) / std::max(1, displayWidth);
    const double down = double(picture.height) / std::max(1, displayHeight);
    QPainter painter(&frame);
    // Of pixels that are taken as they are nothing is changed by this.
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF whole(-crop.x, -crop.y, picture.width / across, picture.height / down);
    painter.drawImage(whole, source);
    painter.end();
    // The fourth byte of such pictures may be anything.
    for (int y = 0; y < target.height(); ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(target.mutableRow(0, y));
        std::transform(row, row + target.width(), row, [](std::uint32_t pixel) { return pixel | 0xff000000U; });
    }
}

} // namespace keldra
