#include "media/FrameRequest.h"

namespace keldra {

FrameRequest::FrameRequest(std::shared_ptr<const VideoInstruction> instruction, MediaTime compositionTime,
                           SourceFrames sourceFrames, std::shared_ptr<PixelBufferPool> pool, Done done)
    : m_instruction(std::move(instruction))
    , m_compositionTime(compositionTime)
    , m_sourceFrames(std::move(sourceFrames))
    , m_pool(std::move(pool))
    , m_done(std::move(done)) {}

FrameRequest::FrameRequest(std::shared_ptr<const VideoInstruction> instruction, MediaTime compositionTime,
                           std::map<std::int32_t, PixelBuffer> sourceFrames, std::shared_ptr<PixelBufferPool> pool,
                           Done done)
    : FrameRequest(
          std::move(instruction), compositionTime,
          [frames = std::move(sourceFrames)](std::int32_t trackID) {
              const auto found = frames.find(trackID);
              return found == frames.end() ? PixelBuffer() : found->second;
          },
          std::move(pool), std::move(done)) {}

FrameRequest::~FrameRequest() {
    if (m_done)
        end(Cancelled());
}

void FrameRequest::finish(PixelBuffer frame) {
    end(std::move(frame));
}

void FrameRequest::finish(Error error) {
    end(std::move(error));
}

void FrameRequest::finishCancelled() {
    end(Cancelled());
}

void FrameRequest::end(Outcome outcome) {
    // Only the first finish counts.
    if (const Done done = std::exchange(m_done, nullptr))
        done(std::move(outcome));
}

} // namespace keldra
