#pragma once

#include "composition/ClipShape.h"
#include "imaging/PixelBuffer.h"
#include "project/CanvasBackground.h"

#include <QSize>

#include <memory>

namespace keldra {

/// What lies under the lowest layer: the background with that layer's shadow on it. Painted anew only when one of them
/// changes. One thread.
class Underlay {
public:
    /// BGRA, of the canvas's size; the same pixels as long as nothing changes. `lowest` may be null.
    const PixelBuffer& find(const CanvasBackground& background, const QSize& canvas,
                            const std::shared_ptr<const ClipShape>& lowest);

private:
    CanvasBackground m_background;
    qint64 m_pictureKey = 0;
    std::shared_ptr<const ClipShape> m_shadowOf;
    PixelBuffer m_plain;
    PixelBuffer m_pixels;
};

} // namespace keldra
