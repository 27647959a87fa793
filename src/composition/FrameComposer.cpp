#include "composition/FrameComposer.h"

#include "composition/CanvasBackgroundRenderer.h"
#include "composition/LayerPlacement.h"
#include "composition/Transforms.h"
#include "project/ZoomEvaluation.h"

#include <cmath>
#include <cstring>

namespace keldra {
namespace {

constexpr std::ptrdiff_t bytesPerPixel = 4;
constexpr std::size_t mostLayersAtOnce = 8;

void blendShadowRow(const ClipShape& shape, int y, std::uint8_t* row) {
    const PixelRect& bounds = shape.shadow.bounds();
    if (y >= bounds.y && y < bounds.bottom())
        blendColorCovered(row + bounds.x * bytesPerPixel, shape.shadowColor, shape.shadow.row(y), bounds.width);
}

} // namespace

void FrameComposer::compose(const EditorCompositorInstruction& instruction, double seconds,
                            const SourceFrames& sourceFrame, PixelBuffer& target) {
    const QSize canvas(target.width(), target.height());
    auto layer = instruction.layers.crbegin();
    bool isLowest = true;
    do {
        m_layerCount = 0;
        for (; layer != instruction.layers.crend() && m_layerCount < mostLayersAtOnce; ++layer) {
            if (!(layer->opacity > 0))
                continue;
            if (const PixelBuffer source = sourceFrame(layer->trackID))
                prepareLayer(instruction, *layer, seconds, source, canvas);
        }
        if (isLowest)
            prepareUnderlay(instruction.background, canvas);
        for (int y = 0; y < target.height(); ++y)
            drawRow(y, target, isLowest);
        for (Drawn& drawn : m_layers)
            drawn.rows.end();
        isLowest = false;
    } while (layer != instruction.layers.crend());
}

void FrameComposer::prepareLayer(const EditorCompositorInstruction& instruction,
                                 const EditorCompositorInstruction::Layer& layer, double seconds,
                                 const PixelBuffer& source, const QSize& canvas) {
    const QSize sourceSize(source.width(), source.height());
    const QRectF videoRect = placedRect(layer.transform, sourceSize);
    if (videoRect.isEmpty())
        return;
    auto shape = m_shapes.find(
        {videoRect, canvas, instruction.cornerRadiusFraction, instruction.shadow, std::min(layer.opacity, 1.0f)});
    const PixelRect bounds = shape->coverage.bounds();

    // The picture grows inside the rectangle that it takes without zoom; outline and shadow stay.
    const ZoomState zoom = zoomState(instruction.zoomBlocks, seconds);
    const QTransform transform = layer.transform * zoomTransform(zoom.scale, zoom.focus, videoRect);

    if (m_layers.size() == m_layerCount)
        m_layers.emplace_back();
    Drawn& drawn = m_layers[m_layerCount];
    drawn.shape = std::move(shape);
    drawn.opacity = std::uint8_t(std::lround(std::min(layer.opacity, 1.0f) * 255));
    if (!bounds.isEmpty()) {
        if (const auto axes = axisPlacement(transform, sourceSize)) {
            if (!axes->turn.isNone())
                turnPicture(source, axes->turn, drawn.turned);
            drawn.rows.begin(axes->turn.isNone() ? source : drawn.turned, axes->placement, bounds.x, bounds.width);
        } else {
            const PixelBuffer picture = drawTransformed(source, toAffineTransform(transform), bounds);
            if (!picture)
                return;
            drawn.rows.begin(picture, {1, 1, double(bounds.x), double(bounds.y)}, bounds.x, bounds.width);
        }
    }
    ++m_layerCount;
}

void FrameComposer::prepareUnderlay(const CanvasBackground& background, const QSize& canvas) {
    const auto* image = std::get_if<CanvasImageBackground>(&background);
    const QImage picture = image ? CanvasBackgroundRenderer::cachedImage(image->url) : QImage();
    const qint64 pictureKey = picture.isNull() ? 0 : picture.cacheKey();
    const bool isSameBackground = m_underlay.plain.width() == canvas.width() &&
                                  m_underlay.plain.height() == canvas.height() && m_underlay.pictureKey == pictureKey &&
                                  m_underlay.background == background;
    if (!isSameBackground) {
        m_underlay.background = background;
        m_underlay.pictureKey = pictureKey;
        m_underlay.plain = CanvasBackgroundRenderer::backgroundImage(background, canvas, picture);
    }
    const bool hasShadow = m_layerCount > 0 && !m_layers[0].shape->shadow.bounds().isEmpty();
    const auto shadowOf = hasShadow ? m_layers[0].shape : nullptr;
    if (isSameBackground && m_underlay.shadowOf == shadowOf)
        return;
    m_underlay.shadowOf = shadowOf;
    m_underlay.pixels = m_underlay.plain;
    if (!hasShadow)
        return;
    m_underlay.pixels = PixelBuffer::allocate(PixelFormat::bgra, canvas.width(), canvas.height());
    for (int y = 0; y < canvas.height(); ++y) {
        std::uint8_t* row = m_underlay.pixels.mutableRow(0, y);
        std::memcpy(row, m_underlay.plain.row(0, y), std::size_t(canvas.width() * bytesPerPixel));
        blendShadowRow(*shadowOf, y, row);
    }
}

FrameComposer::LayerRow FrameComposer::rowOf(Drawn& layer, int y) {
    const Coverage& coverage = layer.shape->coverage;
    const PixelRect& bounds = coverage.bounds();
    if (y < bounds.y || y >= bounds.bottom())
        return {};
    const std::uint8_t* pixels = layer.rows.row(y);
    const auto [begin, end] = coverage.fullRun(y);
    if (layer.opacity < 255 || !isOpaque(pixels + begin * bytesPerPixel, end - begin))
        return {pixels, 0, 0};
    return {pixels, bounds.x + begin, bounds.x + end};
}

void FrameComposer::drawRow(int y, PixelBuffer& target, bool isOverUnderlay) {
    std::uint8_t* row = target.mutableRow(0, y);
    const LayerRow lowest = m_layerCount > 0 ? rowOf(m_layers[0], y) : LayerRow{};
    if (isOverUnderlay) {
        const std::uint8_t* under = m_underlay.pixels.row(0, y);
        const std::ptrdiff_t hiddenEnd = lowest.hiddenEnd * bytesPerPixel;
        std::memcpy(row, under, std::size_t(lowest.hiddenBegin * bytesPerPixel));
        std::memcpy(row + hiddenEnd, under + hiddenEnd, std::size_t(target.width() * bytesPerPixel - hiddenEnd));
    }
    for (std::size_t at = 0; at < m_layerCount; ++at) {
        // The underlay has the lowest layer's shadow on it.
        if (at > 0 || !isOverUnderlay)
            blendShadowRow(*m_layers[at].shape, y, row);
        drawLayerRow(m_layers[at], at == 0 ? lowest : rowOf(m_layers[at], y), y, row);
    }
}

void FrameComposer::drawLayerRow(const Drawn& layer, const LayerRow& layerRow, int y, std::uint8_t* row) {
    const std::uint8_t* pixels = layerRow.pixels;
    if (!pixels)
        return;
    const Coverage& coverage = layer.shape->coverage;
    const PixelRect& bounds = coverage.bounds();
    const std::uint8_t* covered = coverage.row(y);
    std::uint8_t* target = row + bounds.x * bytesPerPixel;
    if (layer.opacity < 255) {
        m_coverage.resize(std::size_t(bounds.width));
        scaleCoverage(m_coverage.data(), covered, layer.opacity, bounds.width);
        blendRowCovered(target, pixels, m_coverage.data(), bounds.width);
        return;
    }
    const auto [begin, end] = coverage.fullRun(y);
    const std::ptrdiff_t first = begin * bytesPerPixel;
    const std::ptrdiff_t last = end * bytesPerPixel;
    blendRowCovered(target, pixels, covered, begin);
    if (layerRow.hiddenEnd > layerRow.hiddenBegin)
        std::memcpy(target + first, pixels + first, std::size_t(last - first));
    else
        blendRow(target + first, pixels + first, end - begin);
    blendRowCovered(target + last, pixels + last, covered + end, bounds.width - end);
}

} // namespace keldra
