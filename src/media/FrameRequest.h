#pragma once

#include "base/Error.h"
#include "base/MediaTime.h"
#include "base/Recycling.h"
#include "imaging/PixelBuffer.h"
#include "imaging/PixelBufferPool.h"
#include "media/VideoComposition.h"

#include <functional>
#include <map>
#include <memory>
#include <variant>

namespace keldra {

/// Pictures by the composition track that they are of.
using TrackPictures =
    std::map<std::int32_t, PixelBuffer, std::less<>, Recycling<std::pair<const std::int32_t, PixelBuffer>>>;

/// One picture that a compositor is asked for. Ends in exactly one finish; a request dropped without one ends as
/// cancelled.
class FrameRequest {
public:
    struct Cancelled {};
    using Outcome = std::variant<PixelBuffer, Error, Cancelled>;
    /// Runs once, on whatever thread finishes the request. One that holds no more than two words, both plain, costs no
    /// memory.
    using Done = std::function<void(Outcome)>;

    /// Answers with a track's picture when the compositor asks for it, on the compositor's thread.
    using SourceFrames = std::function<PixelBuffer(std::int32_t trackID)>;

    FrameRequest(std::shared_ptr<const VideoInstruction> instruction, MediaTime compositionTime,
                 SourceFrames sourceFrames, std::shared_ptr<PixelBufferPool> pool, Done done);
    /// With all pictures there already. What `done` points to may be kept alive by the request.
    FrameRequest(std::shared_ptr<const VideoInstruction> instruction, MediaTime compositionTime,
                 TrackPictures sourceFrames, std::shared_ptr<PixelBufferPool> pool, Done done,
                 std::shared_ptr<const void> keptAlive = nullptr);
    ~FrameRequest();
    FrameRequest(const FrameRequest&) = delete;
    FrameRequest& operator=(const FrameRequest&) = delete;

    const VideoInstruction& instruction() const { return *m_instruction; }
    MediaTime compositionTime() const { return m_compositionTime; }
    int renderWidth() const { return m_pool->width(); }
    int renderHeight() const { return m_pool->height(); }
    /// No picture when the track has none at this time. BGRA or 4:2:0.
    PixelBuffer sourceFrame(std::int32_t trackID) const;
    /// A buffer of the render size to compose into, in the format that is asked for; no picture when none can be had.
    PixelBuffer newPixelBuffer() { return m_pool->take(); }

    void finish(PixelBuffer frame);
    void finish(Error error);
    void finishCancelled();

private:
    void end(Outcome outcome);

    std::shared_ptr<const VideoInstruction> m_instruction;
    MediaTime m_compositionTime;
    std::variant<SourceFrames, TrackPictures> m_sourceFrames;
    std::shared_ptr<PixelBufferPool> m_pool;
    std::shared_ptr<const void> m_keptAlive;
    Done m_done;
};

} // namespace keldra
