#include "composition/Underlay.h"

#include "composition/CanvasBackgroundRenderer.h"

#include <cstring>

namespace keldra {

const PixelBuffer& Underlay::find(const CanvasBackground& background, const QSize& canvas,
                                  const std::shared_ptr<const ClipShape>& lowest) {
    const auto* image = std::get_if<CanvasImageBackground>(&background);
    const QImage picture = image ? CanvasBackgroundRenderer::cachedImage(image->url) : QImage();
    const qint64 pictureKey = picture.isNull() ? 0 : picture.cacheKey();
    const bool isSameBackground = m_plain.width() == canvas.width() && m_plain.height() == canvas.height() &&
                                  m_pictureKey == pictureKey && m_background == background;
    if (!isSameBackground) {
        m_background = background;
        m_pictureKey = pictureKey;
        m_plain = CanvasBackgroundRenderer::backgroundImage(background, canvas, picture);
    }
    const bool hasShadow = lowest && !lowest->shadow.bounds().isEmpty();
    const auto shadowOf = hasShadow ? lowest : nullptr;
    if (isSameBackground && m_shadowOf == shadowOf)
        return m_pixels;
    m_shadowOf = shadowOf;
    m_pixels = m_plain;
    if (!hasShadow)
        return m_pixels;
    constexpr std::size_t bytesPerPixel = 4;
    m_pixels = PixelBuffer::allocate(PixelFormat::bgra, canvas.width(), canvas.height());
    for (int y = 0; y < canvas.height(); ++y) {
        std::uint8_t* row = m_pixels.mutableRow(0, y);
        std::memcpy(row, m_plain.row(0, y), std::size_t(canvas.width()) * bytesPerPixel);
        blendShadowRow(*shadowOf, y, row);
    }
    return m_pixels;
}

} // namespace keldra
