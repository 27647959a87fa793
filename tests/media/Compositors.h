#pragma once

#include "base/SerialQueue.h"
#include "media/FrameRequest.h"
#include "media/TestMovies.h"
#include "media/VideoComposition.h"

#include <algorithm>
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
            fill(target, source);
            request->finish(target);
        });
    }

private:
    /// Sources and targets of these tests have one format.
    static void fill(PixelBuffer& target, const PixelBuffer& source) {
        const bool isPlanar = target.format() == PixelFormat::i420;
        for (int plane = 0; plane < PixelBuffer::planeCount(target.format()); ++plane) {
            const int pixelBytes = isPlanar ? 1 : 4;
            for (int y = 0; y < target.planeHeight(plane); ++y) {
                std::uint8_t* row = target.mutableRow(plane, y);
                const int black = !isPlanar ? 0 : plane == 0 ? 16 : 128;
                std::memset(row, black, std::size_t(pixelBytes * target.planeWidth(plane)));
                if (source && y < source.planeHeight(plane))
                    std::memcpy(row, source.row(plane, y),
                                std::size_t(pixelBytes * std::min(source.planeWidth(plane), target.planeWidth(plane))));
            }
        }
    }

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

/// Shows the tracks' pictures in their own size from zero on.
inline VideoComposition copying(std::vector<std::int32_t> trackIDs, MediaTime end, MediaTime frameDuration) {
    VideoComposition video;
    video.renderWidth = pictureWidth;
    video.renderHeight = pictureHeight;
    video.frameDuration = frameDuration;
    video.instructions = {showing(std::move(trackIDs), MediaTime::zero(), end)};
    video.makeCompositor = [] { return std::make_unique<CopyingCompositor>(); };
    return video;
}

} // namespace keldra::test
