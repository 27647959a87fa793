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

/// A deep stack is drawn a few layers at a time, so that only their pictures are in memory together.
constexpr int mostLayersAtOnce = 8;

/// Finds what is drawn at `seconds` of the timeline, the lowest first, leaving out the `first` lowest layers of the
/// instruction. Answers how many layers are done with after these. `layers` keeps its memory.
int findLayers(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
               const QSize& canvas, ClipShapeCache& shapes, int first, std::vector<FrameLayer>& layers);

} // namespace keldra
