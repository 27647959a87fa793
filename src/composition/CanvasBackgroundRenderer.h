#pragma once

#include "imaging/PixelBuffer.h"
#include "project/CanvasBackground.h"

#include <QImage>
#include <QSize>

namespace keldra {

/// Paints what lies behind the recording. Any thread.
namespace CanvasBackgroundRenderer {

/// A BGRA picture of that size, covered by the background; never fails. A picture that cannot be read shows its
/// fallback colour.
PixelBuffer backgroundImage(const CanvasBackground& background, const QSize& size);

/// The same with the picture already looked up; a null image counts as unreadable.
PixelBuffer backgroundImage(const CanvasBackground& background, const QSize& size, const QImage& picture);

/// The decoded picture file (premultiplied BGRA, upright), or a null image. A picture is decoded once per process and
/// stays; a file that cannot be read is tried again at the next call. The cache is locked while it decodes.
QImage cachedImage(const QUrl& url);

} // namespace CanvasBackgroundRenderer

} // namespace keldra
