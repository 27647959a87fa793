#include "recording/CameraBubble.h"

#include "imaging/Blend.h"

#include <QImage>
#include <QPainter>

#include <cmath>
#include <cstring>

namespace keldra {
namespace {

/// Fills the rectangle, aspect kept, centred.
Placement fillPlacement(const PixelBuffer& camera, const QRectF& rect) {
    const double scale = std::max(rect.width() / camera.width(), rect.height() / camera.height());
    return {scale, scale, rect.center().x() - camera.width() * scale / 2,
            rect.center().y() - camera.height() * scale / 2};
}

} // namespace

std::optional<BubblePlace> placeBubble(const CameraOverlaySnapshot& overlay, const OverlaySpace& space) {
    if (!overlay.isVisible || overlay.frame.isEmpty() || space.isEmpty())
        return std::nullopt;
    const QRectF visible = overlay.frame & space.source;
    if (visible.isEmpty())
        return std::nullopt;
    const QRectF rect = space.map(visible);
    if (rect.width() <= 1 || rect.height() <= 1)
        return std::nullopt;
    const double radius = overlay.shape == CameraOverlayShape::circle
                              ? std::min(rect.width(), rect.height()) / 2
                              : overlay.cornerRadius * std::min(space.scaleX(), space.scaleY());
    return BubblePlace{rect, radius};
}

void CameraBubble::draw(PixelBuffer& frame, const PixelBuffer& camera, const BubblePlace& place) {
    const QRect outer = place.rect.toAlignedRect();
    const PixelRect bounds = PixelRect{outer.x(), outer.y(), outer.width(), outer.height()}.intersection(
        {0, 0, frame.width(), frame.height()});
    if (bounds.isEmpty())
        return;
    prepareMask(place, bounds);
    m_resampler.begin(camera, fillPlacement(camera, place.rect), bounds.x, bounds.width);
    for (int y = 0; y < bounds.height; ++y)
        blendRowCovered(frame.mutableRow(0, bounds.y + y) + std::ptrdiff_t(bounds.x) * 4, m_resampler.row(bounds.y + y),
                        m_mask.data() + std::ptrdiff_t(y) * bounds.width, bounds.width);
    m_resampler.end();
}

void CameraBubble::prepareMask(const BubblePlace& place, const PixelRect& bounds) {
    if (!m_mask.empty() && m_maskPlace == place && m_maskBounds == bounds)
        return;
    m_maskPlace = place;
    m_maskBounds = bounds;
    QImage image(bounds.width, bounds.height, QImage::Format_Grayscale8);
    image.fill(0);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(-bounds.x, -bounds.y);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(place.rect, place.cornerRadius, place.cornerRadius);
    }
    m_mask.resize(std::size_t(bounds.width) * std::size_t(bounds.height));
    for (int y = 0; y < bounds.height; ++y)
        std::memcpy(m_mask.data() + std::ptrdiff_t(y) * bounds.width, image.constScanLine(y),
                    std::size_t(bounds.width));
}

} // namespace keldra
