#pragma once

#include "composition/FrameLayers.h"
#include "composition/Underlay.h"
#include "imaging/PlaneResample.h"

#include <array>
#include <cstdint>
#include <vector>

namespace keldra {

/// Draws the frames of FrameComposer without leaving 4:2:0: a quarter to a third of the work. They differ from its
/// frames by rounding, and where colours mix beyond what red, green and blue can hold. One thread at a time.
class PlanarFrameComposer {
public:
    /// Draws the frame at `seconds` of the timeline over all of `target` (4:2:0, of the canvas's even size). False,
    /// with nothing drawn, when one of the pictures is no 4:2:0 picture or does not stand upright, or the stack is too
    /// deep.
    bool compose(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
                 PixelBuffer& target);

private:
    static constexpr int planeCount = 3;
    using PlaneRows = std::array<PlaneResampler, planeCount>;

    void drawPlane(int plane, PixelBuffer& target);
    void drawLayerRow(int plane, std::size_t layer, int y, std::uint8_t* row);

    ClipShapeCache m_shapes;
    Underlay m_underlay;
    /// The underlay that the planes were converted from; held, so that its place in memory tells it from others.
    PixelBuffer m_underlaySource;
    PixelBuffer m_underlayPlanes;
    std::vector<FrameLayer> m_layers;
    std::vector<PlaneRows> m_rows;
    std::vector<std::uint8_t> m_coverage;
};

} // namespace keldra
