#pragma once

#include "base/SerialQueue.h"
#include "media/FrameRequest.h"
#include "media/VideoComposition.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <memory>

namespace keldra::test {

/// Shows the first required track as it is; black where it has no picture.
class CopyingCompositor final : public FrameCompositor {
public:
    void startRequest(std::shared_ptr<FrameRequest> request) override {
        m_queue.post([request] {
            PixelBuffer target = request->newPixelBuffer();
            if (!target) {
                request->finish(Error{"test", 1, "No buffer.", {}});
                return;
            }
            const auto& tracks = request->instruction().requiredSourceTrackIDs;
            const PixelBuffer source = tracks.empty() ? PixelBuffer() : request->sourceFrame(tracks.front());
            for (int y = 0; y < target.height(); ++y) {
                if (source && y < source.height())
                    std::memcpy(target.mutableRow(0, y), source.row(0, y),
                                std::size_t(4 * std::min(source.width(), target.width())));
                else
                    std::memset(target.mutableRow(0, y), 0, std::size_t(4 * target.width()));
            }
            request->finish(target);
        });
    }

private:
    SerialQueue m_queue{"test.compositor"};
};

/// Does with each request, by its number from 0, what the test says, at once.
class ScriptedCompositor final : public FrameCompositor {
public:
    using Script = std::function<void(int number, std::shared_ptr<FrameRequest>)>;
    explicit ScriptedCompositor(Script script) : m_script(std::move(script)) {}
    void startRequest(std::shared_ptr<FrameRequest> request) override { m_script(m_number++, std::move(request)); }

private:
    Script m_script;
    int m_number = 0;
};

/// Instructions that show a track for a stretch each.
inline std::shared_ptr<VideoInstruction> showing(std::vector<std::int32_t> trackIDs, MediaTime start, MediaTime end) {
    auto instruction = std::make_shared<VideoInstruction>();
    instruction->timeRange = {start, end - start};
    instruction->requiredSourceTrackIDs = std::move(trackIDs);
    return instruction;
}

} // namespace keldra::test
