#include "recording/FrameDecorator.h"

#include "recording/PointerEffectsDrawing.h"

#include <QImage>
#include <QPainter>

#include <cstring>

namespace keldra {
namespace {

/// Frames that wait in the writer, and the one being made.
constexpr int poolLimit = 8;

void copyPixels(const PixelBuffer& source, PixelBuffer& target) {
    for (int y = 0; y < target.height(); ++y)
        std::memcpy(target.mutableRow(0, y), source.row(0, y), std::size_t(target.width()) * 4);
}

} // namespace

bool showsBubble(const FrameOverlays& overlays) {
    return overlays.cameraPicture && placeBubble(overlays.camera, overlays.space);
}

FrameDecorator::FrameDecorator(int width, int height) : m_pool(PixelFormat::bgra, width, height, poolLimit) {}

PixelBuffer FrameDecorator::decorated(const PixelBuffer& frame, const FrameOverlays& overlays) {
    const auto map = [&overlays](QPointF point) { return overlays.space.map(point); };
    const auto bubble = overlays.cameraPicture ? placeBubble(overlays.camera, overlays.space) : std::nullopt;
    const bool hasEffects = hasVisibleEffects(overlays.effects, map);
    if (!bubble && !hasEffects)
        return {};
    PixelBuffer target = m_pool.take();
    if (!target)
        return {};
    copyPixels(frame, target);
    if (bubble)
        m_bubble.draw(target, overlays.cameraPicture, *bubble);
    if (hasEffects) {
        QImage image(target.mutableData(), target.width(), target.height(), target.strideBytes(), QImage::Format_RGB32);
        QPainter painter(&image);
        drawPointerEffects(painter, overlays.effects, overlays.space.effectScale(), map);
    }
    return target;
}

} // namespace keldra
