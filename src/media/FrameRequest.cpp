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
                           TrackPictures sourceFrames, std::shared_ptr<PixelBufferPool> pool, Done done,
                           std::shared_ptr<const void> keptAlive)
    : m_instruction(std::move(instruction))
    , m_compositionTime(compositionTime)
    , m_sourceFrames(std::move(sourceFrames))
    , m_pool(std::move(pool))
    , m_keptAlive(std::move(keptAlive))
    , m_done(std::move(done)) {}

FrameRequest::~FrameRequest() {
    if (m_done)
        end(Cancelled());
}

PixelBuffer FrameRequest::sourceFrame(std::int32_t trackID) const {
    if (const auto* read = std::get_if<SourceFrames>(&m_sourceFrames))
        return (*read)(trackID);
    const auto& pictures = std::get<TrackPictures>(m_sourceFrames);
    const auto found = pictures.find(trackID);
    return found == pictures.end() ? PixelBuffer() : found->second;
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
