#pragma once

#include "composition/ClipShape.h"
#include "composition/EditorCompositorInstruction.h"
#include "imaging/PixelBuffer.h"

#include <QSize>
#include <QTransform>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace keldra {

/// A layer that has a picture in a frame.
struct FrameLayer {
    PixelBuffer source;
    std::shared_ptr<const ClipShape> shape;
    std::uint8_t opacity = 255;
    /// Source pixels to canvas pixels, zoom included; y down.
    QTransform transform;
};

/// The picture of a composition track at the frame's time; none where the track has none.
using SourceFrames = std::function<PixelBuffer(std::int32_t trackID)>;

/// Finds what is drawn at `seconds` of the timeline, the lowest first. `layers` keeps its memory.
void findLayers(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
                const QSize& canvas, ClipShapeCache& shapes, std::vector<FrameLayer>& layers);

} // namespace keldra
