#pragma once

#include "composition/ClipShape.h"
#include "composition/EditorCompositorInstruction.h"
#include "imaging/Resample.h"

#include <QImage>

#include <cstdint>
#include <functional>
#include <vector>

namespace keldra {

/// Draws frames: the background, then each layer from the last to the first with its shadow, corners, zoom and opacity.
/// Pixels are mixed as plain numbers.
///
/// A deep stack is drawn a few layers at a time, so that only their pictures are in memory together.
///
/// What stands still from frame to frame (outlines, shadows, and the background under the lowest layer's shadow) is
/// kept, keyed by all that it is made from; a frame then touches every pixel once, row by row. One thread at a time.
class FrameComposer {
public:
    /// The picture of a composition track at the frame's time; none where the track has none.
    using SourceFrames = std::function<PixelBuffer(std::int32_t trackID)>;

    /// Draws the frame at `seconds` of the timeline over all of `target` (BGRA, of the canvas's size).
    void compose(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
                 PixelBuffer& target);

private:
    /// A layer that has a picture in this frame. Kept between frames for its memory.
    struct Drawn {
        std::shared_ptr<const ClipShape> shape;
        std::uint8_t opacity = 255;
        PixelBuffer turned;
        RowResampler rows;
    };
    /// The background with the lowest layer's shadow on it.
    struct Underlay {
        CanvasBackground background;
        qint64 pictureKey = 0;
        std::shared_ptr<const ClipShape> shadowOf;
        PixelBuffer plain;
        PixelBuffer pixels;
    };

    void prepareLayer(const EditorCompositorInstruction& instruction, const EditorCompositorInstruction::Layer& layer,
                      double seconds, const PixelBuffer& source, const QSize& canvas);
    void prepareUnderlay(const CanvasBackground& background, const QSize& canvas);
    /// One row of a layer's picture.
    struct LayerRow {
        /// From the layer's left bound on; null where the layer has no pixel.
        const std::uint8_t* pixels = nullptr;
        /// The columns of the canvas of which nothing below is seen.
        int hiddenBegin = 0;
        int hiddenEnd = 0;
    };
    static LayerRow rowOf(Drawn& layer, int y);
    /// Draws over what the row shows, or over the underlay.
    void drawRow(int y, PixelBuffer& target, bool isOverUnderlay);
    void drawLayerRow(const Drawn& layer, const LayerRow& layerRow, int y, std::uint8_t* row);

    ClipShapeCache m_shapes;
    Underlay m_underlay;
    std::vector<Drawn> m_layers;
    /// How many of them this frame has, lowest first.
    std::size_t m_layerCount = 0;
    std::vector<std::uint8_t> m_coverage;
};

} // namespace keldra
