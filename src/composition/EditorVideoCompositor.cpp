#include "composition/EditorVideoCompositor.h"

#include "composition/EditorCompositorInstruction.h"
#include "composition/FrameDrawing.h"
#include "imaging/Convert.h"
#include "media/FrameRequest.h"

#include <algorithm>

namespace keldra {
namespace {

void blacken(PixelBuffer& target) {
    constexpr PremultipliedColor black{0, 0, 0, 255};
    if (target.format() == PixelFormat::bgra) {
        for (int y = 0; y < target.height(); ++y)
            fillRow(target.mutableRow(0, y), black, target.width());
        return;
    }
    for (int plane = 0; plane < PixelBuffer::planeCount(target.format()); ++plane)
        for (int y = 0; y < target.planeHeight(plane); ++y)
            std::fill_n(target.mutableRow(plane, y), target.planeWidth(plane), planarColor(black)[std::size_t(plane)]);
}

void answer(FrameRequest& request, FrameDrawing& drawing) {
    PixelBuffer target = request.newPixelBuffer();
    if (!target)
        return request.finish(makeError(EditorCompositorError::couldNotCreatePixelBuffer));
    const auto* instruction = dynamic_cast<const EditorCompositorInstruction*>(&request.instruction());
    if (instruction) {
        drawing.draw(
            *instruction, request.compositionTime().seconds(),
            [&request](std::int32_t trackID) { return request.sourceFrame(trackID); }, target);
    } else {
        blacken(target);
    }
    request.finish(std::move(target));
}

} // namespace

Error makeError(EditorCompositorError code) {
    return {"EditorCompositorError", int(code), {}, {}};
}

EditorVideoCompositor::EditorVideoCompositor()
    : m_renderQueue("com.keldra.editor.compositor"), m_drawing(std::make_shared<FrameDrawing>()) {}

EditorVideoCompositor::~EditorVideoCompositor() = default;

void EditorVideoCompositor::startRequest(std::shared_ptr<FrameRequest> request) {
    m_renderQueue.post([weakDrawing = std::weak_ptr(m_drawing), request = std::move(request)] {
        if (const auto drawing = weakDrawing.lock())
            answer(*request, *drawing);
        else
            request->finishCancelled();
    });
}

} // namespace keldra
