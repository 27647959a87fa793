#include "composition/FrameComposer.h"

#include "composition/LayerPlacement.h"
#include "composition/Transforms.h"

#include <cstring>

namespace keldra {
namespace {

constexpr std::ptrdiff_t bytesPerPixel = 4;

} // namespace

void FrameComposer::compose(const EditorCompositorInstruction& instruction, double seconds,
                            const SourceFrames& sourceFrame, PixelBuffer& target) {
    const QSize canvas(target.width(), target.height());
    m_drawn.resize(mostLayersAtOnce);
    int found = 0;
    do {
        const bool isLowest = found == 0;
        found = findLayers(instruction, seconds, sourceFrame, canvas, m_shapes, found, m_layers);
        for (std::size_t at = 0; at < m_layers.size(); ++at)
            m_drawn[at].hasRows = beginRows(m_layers[at], m_drawn[at]);
        const PixelBuffer* underlay = nullptr;
        if (isLowest)
            underlay = &m_underlay.find(instruction.background, canvas, m_layers.empty() ? nullptr : m_layers[0].shape);
        for (int y = 0; y < target.height(); ++y)
            drawRow(y, underlay, target);
        m_layers.clear();
        for (Drawn& drawn : m_drawn)
            drawn.rows.end();
    } while (found < instruction.layers.size());
}

bool FrameComposer::beginRows(const FrameLayer& layer, Drawn& drawn) {
    const PixelRect& bounds = layer.shape->coverage.bounds();
    if (bounds.isEmpty())
        return false;
    if (const auto axes = axisPlacement(layer.transform, {layer.source.width(), layer.source.height()})) {
        if (!axes->turn.isNone())
            turnPicture(layer.source, axes->turn, drawn.turned);
        drawn.rows.begin(axes->turn.isNone() ? layer.source : drawn.turned, axes->placement, bounds.x, bounds.width);
        return true;
    }
    const PixelBuffer picture = drawTransformed(layer.source, toAffineTransform(layer.transform), bounds);
    if (!picture)
        return false;
    drawn.rows.begin(picture, {1, 1, double(bounds.x), double(bounds.y)}, bounds.x, bounds.width);
    return true;
}

FrameComposer::LayerRow FrameComposer::rowOf(std::size_t layer, int y) {
    const Coverage& coverage = m_layers[layer].shape->coverage;
    const PixelRect& bounds = coverage.bounds();
    if (!m_drawn[layer].hasRows || y < bounds.y || y >= bounds.bottom())
        return {};
    const std::uint8_t* pixels = m_drawn[layer].rows.row(y);
    const auto [begin, end] = coverage.fullRun(y);
    if (m_layers[layer].opacity < 255 || !isOpaque(pixels + begin * bytesPerPixel, end - begin))
        return {pixels, 0, 0};
    return {pixels, bounds.x + begin, bounds.x + end};
}

void FrameComposer::drawRow(int y, const PixelBuffer* underlay, PixelBuffer& target) {
    std::uint8_t* row = target.mutableRow(0, y);
    const LayerRow lowest = m_layers.empty() ? LayerRow{} : rowOf(0, y);
    if (underlay) {
        const std::uint8_t* under = underlay->row(0, y);
        const std::ptrdiff_t hiddenEnd = lowest.hiddenEnd * bytesPerPixel;
        std::memcpy(row, under, std::size_t(lowest.hiddenBegin * bytesPerPixel));
        std::memcpy(row + hiddenEnd, under + hiddenEnd, std::size_t(target.width() * bytesPerPixel - hiddenEnd));
    }
    for (std::size_t at = 0; at < m_layers.size(); ++at) {
        // The underlay has the lowest layer's shadow on it.
        if (at > 0 || !underlay)
            blendShadowRow(*m_layers[at].shape, y, row);
        drawLayerRow(m_layers[at], at == 0 ? lowest : rowOf(at, y), y, row);
    }
}

void FrameComposer::drawLayerRow(const FrameLayer& layer, const LayerRow& layerRow, int y, std::uint8_t* row) {
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
