#pragma once

#include "composition/FrameComposer.h"
#include "composition/PlanarFrameComposer.h"

#include <cstdint>
#include <map>

namespace keldra {

/// Draws frames in the format of their target, by the cheapest road that gives the picture: 4:2:0 as long as nothing
/// asks for more, BGRA otherwise. Sources may come in either format. One thread at a time.
class FrameDrawing {
public:
    /// Draws the frame at `seconds` of the timeline over all of `target`, which has the canvas's size.
    void draw(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
              PixelBuffer& target);

private:
    void drawReference(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
                       PixelBuffer& target);
    PixelBuffer asBgra(const PixelBuffer& source, std::int32_t trackID);

    PlanarFrameComposer m_planar;
    FrameComposer m_reference;
    /// What sources and frames are converted in, kept between frames for its memory.
    std::map<std::int32_t, PixelBuffer> m_converted;
    PixelBuffer m_frame;
};

} // namespace keldra
