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
    : m_drawing(std::make_unique<FrameDrawing>()), m_renderQueue("com.keldra.editor.compositor") {}

EditorVideoCompositor::~EditorVideoCompositor() {
    const std::lock_guard guard(m_lock);
    m_isEnding = true;
}

void EditorVideoCompositor::startRequest(std::shared_ptr<FrameRequest> request) {
    {
        const std::lock_guard guard(m_lock);
        m_waiting.push_back(std::move(request));
    }
    m_renderQueue.post([this] { drawNext(); });
}

void EditorVideoCompositor::drawNext() {
    std::shared_ptr<FrameRequest> request;
    bool isCancelled = false;
    {
        const std::lock_guard guard(m_lock);
        request = std::move(m_waiting.front());
        m_waiting.pop_front();
        isCancelled = m_isEnding;
    }
    if (isCancelled)
        request->finishCancelled();
    else
        answer(*request, *m_drawing);
}

} // namespace keldra
