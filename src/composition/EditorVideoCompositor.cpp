#include "composition/EditorVideoCompositor.h"

#include "composition/EditorCompositorInstruction.h"
#include "composition/FrameComposer.h"
#include "media/FrameRequest.h"

namespace keldra {
namespace {

void answer(FrameRequest& request, FrameComposer& composer) {
    PixelBuffer target = request.newPixelBuffer();
    if (!target)
        return request.finish(makeError(EditorCompositorError::couldNotCreatePixelBuffer));
    const auto* instruction = dynamic_cast<const EditorCompositorInstruction*>(&request.instruction());
    if (instruction) {
        composer.compose(
            *instruction, request.compositionTime().seconds(),
            [&request](std::int32_t trackID) { return request.sourceFrame(trackID); }, target);
    } else {
        constexpr PremultipliedColor black{0, 0, 0, 255};
        for (int y = 0; y < target.height(); ++y)
            fillRow(target.mutableRow(0, y), black, target.width());
    }
    request.finish(std::move(target));
}

} // namespace

Error makeError(EditorCompositorError code) {
    return {"EditorCompositorError", int(code), {}, {}};
}

EditorVideoCompositor::EditorVideoCompositor()
    : m_renderQueue("com.keldra.editor.compositor"), m_composer(std::make_shared<FrameComposer>()) {}

EditorVideoCompositor::~EditorVideoCompositor() = default;

void EditorVideoCompositor::startRequest(std::shared_ptr<FrameRequest> request) {
    m_renderQueue.post([weakComposer = std::weak_ptr(m_composer), request = std::move(request)] {
        if (const auto composer = weakComposer.lock())
            answer(*request, *composer);
        else
            request->finishCancelled();
    });
}

} // namespace keldra
