#include "media/FrameGenerator.h"

#include "media/FrameRequest.h"
#include "media/MediaError.h"

#include <future>
#include <optional>

namespace keldra {
namespace {

Result<PixelBuffer> resultOf(FrameRequest::Outcome outcome) {
    if (auto* picture = std::get_if<PixelBuffer>(&outcome))
        return std::move(*picture);
    if (auto* error = std::get_if<Error>(&outcome))
        return fail(std::move(*error));
    return fail(mediaError(MediaError::cancelled, "The frame was cancelled."));
}

} // namespace

FrameGenerator::FrameGenerator(std::shared_ptr<const Composition> composition, VideoComposition videoComposition)
    : m_videoComposition(std::move(videoComposition))
    , m_reader(std::move(composition), {PixelFormat::bgra, 1})
    , m_compositor(m_videoComposition.makeCompositor()) {
    // One in work, one or two with whoever asked.
    constexpr int poolLimit = 4;
    m_pool = std::make_shared<PixelBufferPool>(PixelFormat::bgra, m_videoComposition.renderWidth,
                                               m_videoComposition.renderHeight, poolLimit);
}

Result<PixelBuffer> FrameGenerator::frameAt(MediaTime time) {
    const auto instruction = m_videoComposition.instructionAt(time);
    if (!instruction)
        return fail(mediaError(MediaError::outsideTheTimeline, "There is no picture at this time."));

    // Pictures are read as the compositor comes to them, while this thread waits. A request always ends, at the latest
    // when the compositor drops it.
    const auto failure = std::make_shared<std::optional<Error>>();
    const auto read = [this, time, failure](std::int32_t trackID) {
        if (*failure)
            return PixelBuffer();
        Result<PixelBuffer> frame = m_reader.frameAt(time, trackID);
        if (!frame)
            failure->emplace(std::move(frame.error()));
        return frame.value_or(PixelBuffer());
    };
    const auto promise = std::make_shared<std::promise<FrameRequest::Outcome>>();
    auto outcome = promise->get_future();
    m_compositor->startRequest(std::make_shared<FrameRequest>(
        instruction, time, FrameRequest::SourceFrames(read), m_pool,
        [promise](FrameRequest::Outcome ended) { promise->set_value(std::move(ended)); }));
    Result<PixelBuffer> frame = resultOf(outcome.get());
    if (*failure)
        return fail(std::move(**failure));
    return frame;
}

} // namespace keldra
