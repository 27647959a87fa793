#include "composition/FrameDrawing.h"

#include "imaging/Convert.h"

namespace keldra {
namespace {

void fitSize(PixelBuffer& buffer, const PixelBuffer& model) {
    if (buffer.width() != model.width() || buffer.height() != model.height())
        buffer = PixelBuffer::allocate(PixelFormat::bgra, model.width(), model.height());
}

} // namespace

void FrameDrawing::draw(const EditorCompositorInstruction& instruction, double seconds, const SourceFrames& sourceFrame,
                        PixelBuffer& target) {
    if (target.format() == PixelFormat::bgra)
        return drawReference(instruction, seconds, sourceFrame, target);
    if (m_planar.compose(instruction, seconds, sourceFrame, target))
        return;
    fitSize(m_frame, target);
    drawReference(instruction, seconds, sourceFrame, m_frame);
    convertBgraToI420(m_frame, target);
}

void FrameDrawing::drawReference(const EditorCompositorInstruction& instruction, double seconds,
                                 const SourceFrames& sourceFrame, PixelBuffer& target) {
    m_reference.compose(
        instruction, seconds, [&](std::int32_t trackID) { return asBgra(sourceFrame(trackID), trackID); }, target);
}

PixelBuffer FrameDrawing::asBgra(const PixelBuffer& source, std::int32_t trackID) {
    if (!source || source.format() == PixelFormat::bgra)
        return source;
    PixelBuffer& converted = m_converted[trackID];
    fitSize(converted, source);
    convertI420ToBgra(source, converted);
    return converted;
}

} // namespace keldra
