#pragma once

#include "base/Error.h"
#include "base/Recycling.h"
#include "base/SerialQueue.h"
#include "media/FrameCompositor.h"

#include <deque>
#include <memory>
#include <mutex>

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
    /// Answers the request that waits longest.
    void drawNext();

    std::unique_ptr<FrameDrawing> m_drawing;
    std::mutex m_lock;
    /// Requests whose turn has not come.
    std::deque<std::shared_ptr<FrameRequest>, Recycling<std::shared_ptr<FrameRequest>>> m_waiting;
    bool m_isEnding = false;
    /// Ends first: it uses what stands above.
    SerialQueue m_renderQueue;
};

} // namespace keldra
