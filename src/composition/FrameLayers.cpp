#include "composition/FrameLayers.h"

#include "composition/LayerPlacement.h"
#include "project/ZoomEvaluation.h"

#include <algorithm>
#include <cmath>

namespace keldra {

int findLayers(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
               const QSize& canvas, ClipShapeCache& shapes, int first, std::vector<FrameLayer>& layers) {
    layers.clear();
    const ZoomState zoom = zoomState(instruction.zoomBlocks, seconds);
    auto layer = instruction.layers.crbegin() + first;
    for (; layer != instruction.layers.crend() && int(layers.size()) < mostLayersAtOnce; ++layer) {
        if (!(layer->opacity > 0))
            continue;
        PixelBuffer source = sourceFrame(layer->trackID);
        if (!source)
            continue;
        const QRectF videoRect = placedRect(layer->transform, {source.width(), source.height()});
        if (videoRect.isEmpty())
            continue;
        const float opacity = std::min(layer->opacity, 1.0f);
        auto shape = shapes.find({videoRect, canvas, instruction.cornerRadiusFraction, instruction.shadow, opacity});
        // The picture grows inside the rectangle that it takes without zoom; outline and shadow stay.
        layers.push_back({std::move(source), std::move(shape), std::uint8_t(std::lround(opacity * 255)),
                          layer->transform * zoomTransform(zoom.scale, zoom.focus, videoRect)});
    }
    return int(layer - instruction.layers.crbegin());
}

} // namespace keldra
