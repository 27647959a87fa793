#pragma once

#include "base/Error.h"
#include "base/SerialQueue.h"
#include "media/FrameCompositor.h"

#include <memory>

namespace keldra {

class FrameDrawing;

enum class EditorCompositorError {
    couldNotCreatePixelBuffer = 1, ///< without words of its own
};
Error makeError(EditorCompositorError code);

/// Draws the frames of the editor's preview and export, one at a time and in the order asked, on the queue
/// "com.keldra.editor.compositor". A request whose turn comes after the compositor has gone ends as cancelled; none is
/// refused for being late. What an instruction of another kind means is not known here: its frame is black.
class EditorVideoCompositor final : public FrameCompositor {
public:
    EditorVideoCompositor();
    ~EditorVideoCompositor() override;

    void startRequest(std::shared_ptr<FrameRequest> request) override;

private:
    /// Outlives the drawing, so that queued requests find it gone.
    SerialQueue m_renderQueue;
    std::shared_ptr<FrameDrawing> m_drawing;
};

} // namespace keldra
