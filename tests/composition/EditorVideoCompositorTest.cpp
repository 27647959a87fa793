#include "composition/EditorVideoCompositor.h"

#include "composition/EditorCompositorInstruction.h"
#include "imaging/Pictures.h"
#include "media/FrameRequest.h"

#include <chrono>
#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>

namespace keldra {
namespace {

using test::Pixel;
using test::pixelAt;

/// Gathers how requests end, on whatever thread they do.
class Outcomes {
public:
    FrameRequest::Done sink(int number) {
        return [this, number](FrameRequest::Outcome outcome) {
            const std::lock_guard guard(m_lock);
            m_ended.emplace_back(number, std::move(outcome));
            m_changed.notify_all();
        };
    }
    std::vector<std::pair<int, FrameRequest::Outcome>> take(std::size_t count) {
        std::unique_lock guard(m_lock);
        m_changed.wait_for(guard, std::chrono::seconds(20), [&] { return m_ended.size() >= count; });
        return m_ended;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::vector<std::pair<int, FrameRequest::Outcome>> m_ended;
};

std::shared_ptr<EditorCompositorInstruction> plainInstruction() {
    auto instruction = std::make_shared<EditorCompositorInstruction>();
    instruction->background = RGBAColor{1, 1, 1, 1};
    instruction->layers = {{1, QTransform(), 1}};
    instruction->shadow.isEnabled = false;
    return instruction;
}

TEST(EditorVideoCompositor, AnswersInOrderWhateverTheRequest) {
    Outcomes outcomes;
    const auto pool = std::make_shared<PixelBufferPool>(PixelFormat::bgra, 4, 4, 3);
    const auto emptyPool = std::make_shared<PixelBufferPool>(PixelFormat::bgra, 4, 4, 0);
    const TrackPictures source{{1, test::flat(2, 2, {0, 0, 255, 255})}};
    const auto instruction = plainInstruction();
    EditorVideoCompositor compositor;
    const auto start = [&](int number, std::shared_ptr<const VideoInstruction> governing, TrackPictures frames,
                           std::shared_ptr<PixelBufferPool> from) {
        compositor.startRequest(std::make_shared<FrameRequest>(std::move(governing), MediaTime(1, 2), std::move(frames),
                                                               std::move(from), outcomes.sink(number)));
    };
    start(0, instruction, source, pool);
    start(1, std::make_shared<VideoInstruction>(), source, pool);
    start(2, instruction, source, emptyPool);
    start(3, instruction, {}, pool);
    const auto ended = outcomes.take(4);
    ASSERT_EQ(ended.size(), 4u);
    for (int number = 0; number < 4; ++number)
        EXPECT_EQ(ended[std::size_t(number)].first, number);
    const auto& drawn = std::get<PixelBuffer>(ended[0].second);
    EXPECT_EQ(pixelAt(drawn, 1, 1), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(pixelAt(drawn, 2, 1), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(pixelAt(std::get<PixelBuffer>(ended[1].second), 3, 3), (Pixel{0, 0, 0, 255})) << "not ours: black";
    EXPECT_EQ(std::get<Error>(ended[2].second), makeError(EditorCompositorError::couldNotCreatePixelBuffer));
    EXPECT_EQ(pixelAt(std::get<PixelBuffer>(ended[3].second), 1, 1), (Pixel{255, 255, 255, 255}));
}

TEST(EditorVideoCompositor, RequestsOfACompositorThatGoesAllEndOnce) {
    constexpr int count = 40;
    Outcomes outcomes;
    const auto pool = std::make_shared<PixelBufferPool>(PixelFormat::bgra, 400, 400, count);
    const auto instruction = plainInstruction();
    {
        EditorVideoCompositor compositor;
        for (int number = 0; number < count; ++number)
            compositor.startRequest(std::make_shared<FrameRequest>(instruction, MediaTime(number, 30), TrackPictures(),
                                                                   pool, outcomes.sink(number)));
    }
    const auto ended = outcomes.take(count);
    ASSERT_EQ(ended.size(), std::size_t(count));
    bool isCancelled = false;
    for (int number = 0; number < count; ++number) {
        EXPECT_EQ(ended[std::size_t(number)].first, number);
        const bool wasCancelled = std::holds_alternative<FrameRequest::Cancelled>(ended[std::size_t(number)].second);
        EXPECT_TRUE(wasCancelled || !isCancelled) << "none is drawn after the first that is cancelled";
        isCancelled = wasCancelled;
    }
}

} // namespace
} // namespace keldra
