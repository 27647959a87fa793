#pragma once

#include "composition/FrameLayers.h"
#include "composition/Underlay.h"
#include "imaging/Resample.h"

#include <cstdint>
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
    /// Draws the frame at `seconds` of the timeline over all of `target` (BGRA, of the canvas's size).
    void compose(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
                 PixelBuffer& target);

private:
    /// What a layer's rows are made with. Kept between frames for its memory.
    struct Drawn {
        PixelBuffer turned;
        RowResampler rows;
        bool hasRows = false;
    };

    /// False when there is nothing to draw.
    static bool beginRows(const FrameLayer& layer, Drawn& drawn);
    /// One row of a layer's picture.
    struct LayerRow {
        /// From the layer's left bound on; null where the layer has no pixel.
        const std::uint8_t* pixels = nullptr;
        /// The columns of the canvas of which nothing below is seen.
        int hiddenBegin = 0;
        int hiddenEnd = 0;
    };
    LayerRow rowOf(std::size_t layer, int y);
    /// Draws over the underlay, or over what the row shows when there is none.
    void drawRow(int y, const PixelBuffer* underlay, PixelBuffer& target);
    void drawLayerRow(const FrameLayer& layer, const LayerRow& layerRow, int y, std::uint8_t* row);

    ClipShapeCache m_shapes;
    Underlay m_underlay;
    /// Of this frame, lowest first; and by the same number what their rows are made with.
    std::vector<FrameLayer> m_layers;
    std::vector<Drawn> m_drawn;
    std::vector<std::uint8_t> m_coverage;
};

} // namespace keldra
