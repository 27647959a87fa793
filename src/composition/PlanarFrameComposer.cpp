#include "composition/PlanarFrameComposer.h"

#include "composition/LayerPlacement.h"
#include "imaging/Convert.h"
#include "imaging/PlaneBlend.h"

#include <cassert>
#include <cstring>

namespace keldra {
namespace {

const Coverage& coverageOf(const ClipShape& shape, int plane) {
    return plane == 0 ? shape.coverage : shape.halfCoverage;
}

void blendShadowRow(const ClipShape& shape, int plane, int y, std::uint8_t* row) {
    const GreyPlane& shadow = plane == 0 ? shape.shadow : shape.halfShadow;
    const PixelRect& bounds = shadow.bounds();
    if (y >= bounds.y && y < bounds.bottom())
        blendValueCovered(row + bounds.x, shape.planarShadowColor[std::size_t(plane)], shadow.row(y), bounds.width);
}

} // namespace

bool PlanarFrameComposer::compose(const EditorCompositorInstruction& instruction, double seconds,
                                  const SourceFrames& sourceFrame, PixelBuffer& target) {
    assert(target.format() == PixelFormat::i420 && target.width() % 2 == 0 && target.height() % 2 == 0);
    const QSize canvas(target.width(), target.height());
    if (instruction.layers.size() > mostLayersAtOnce)
        return false;
    findLayers(instruction, seconds, sourceFrame, canvas, m_shapes, 0, m_layers);
    if (m_rows.size() < m_layers.size())
        m_rows.resize(m_layers.size());
    for (std::size_t at = 0; at < m_layers.size(); ++at) {
        const FrameLayer& layer = m_layers[at];
        const auto axes = axisPlacement(layer.transform, {layer.source.width(), layer.source.height()});
        if (layer.source.format() != PixelFormat::i420 || !axes || !axes->turn.isNone())
            return false;
        for (int plane = 0; plane < planeCount; ++plane) {
            const PixelRect& bounds = coverageOf(*layer.shape, plane).bounds();
            if (!bounds.isEmpty())
                m_rows[at][std::size_t(plane)].begin(layer.source, plane, axes->placement, bounds);
        }
    }

    const PixelBuffer& underlay =
        m_underlay.find(instruction.background, canvas, m_layers.empty() ? nullptr : m_layers[0].shape);
    if (m_underlaySource.data() != underlay.data()) {
        m_underlaySource = underlay;
        m_underlayPlanes = PixelBuffer::allocate(PixelFormat::i420, canvas.width(), canvas.height());
        convertBgraToI420(underlay, m_underlayPlanes);
    }
    for (int plane = 0; plane < planeCount; ++plane)
        drawPlane(plane, target);
    m_layers.clear();
    for (PlaneRows& rows : m_rows)
        for (PlaneResampler& plane : rows)
            plane.end();
    return true;
}

void PlanarFrameComposer::drawPlane(int plane, PixelBuffer& target) {
    const int width = target.planeWidth(plane);
    for (int y = 0; y < target.planeHeight(plane); ++y) {
        std::uint8_t* row = target.mutableRow(plane, y);
        const std::uint8_t* under = m_underlayPlanes.row(plane, y);
        // What the lowest layer covers wholly need not be laid under it.
        int hiddenBegin = 0;
        int hiddenEnd = 0;
        if (!m_layers.empty() && m_layers[0].opacity == 255) {
            const Coverage& coverage = coverageOf(*m_layers[0].shape, plane);
            const PixelRect& bounds = coverage.bounds();
            if (y >= bounds.y && y < bounds.bottom()) {
                hiddenBegin = bounds.x + coverage.fullRun(y).first;
                hiddenEnd = bounds.x + coverage.fullRun(y).second;
            }
        }
        std::memcpy(row, under, std::size_t(hiddenBegin));
        std::memcpy(row + hiddenEnd, under + hiddenEnd, std::size_t(width - hiddenEnd));
        for (std::size_t at = 0; at < m_layers.size(); ++at) {
            if (at > 0)
                blendShadowRow(*m_layers[at].shape, plane, y, row);
            drawLayerRow(plane, at, y, row);
        }
    }
}

void PlanarFrameComposer::drawLayerRow(int plane, std::size_t layer, int y, std::uint8_t* row) {
    const Coverage& coverage = coverageOf(*m_layers[layer].shape, plane);
    const PixelRect& bounds = coverage.bounds();
    if (y < bounds.y || y >= bounds.bottom())
        return;
    const std::uint8_t* samples = m_rows[layer][std::size_t(plane)].row(y);
    const std::uint8_t* covered = coverage.row(y);
    std::uint8_t* target = row + bounds.x;
    if (const std::uint8_t opacity = m_layers[layer].opacity; opacity < 255) {
        m_coverage.resize(std::size_t(bounds.width));
        scaleCoverage(m_coverage.data(), covered, opacity, bounds.width);
        blendPlaneCovered(target, samples, m_coverage.data(), bounds.width);
        return;
    }
    const auto [begin, end] = coverage.fullRun(y);
    blendPlaneCovered(target, samples, covered, begin);
    std::memcpy(target + begin, samples + begin, std::size_t(end - begin));
    blendPlaneCovered(target + end, samples + end, covered + end, bounds.width - end);
}

} // namespace keldra
