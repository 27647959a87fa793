#pragma once

#include "Compositors.h"
#include "TestSound.h"
#include "media/ExportSession.h"

namespace keldra::test {

/// Exports what a test puts together.
class ExportFixture : public testing::Test {
protected:
    static void place(CompositionTrack& track, const AssetPtr& asset, const MediaTimeRange& source,
                      MediaTime at = MediaTime::zero()) {
        const auto placed = track.insertTimeRange(source, asset, 0, at);
        ASSERT_TRUE(placed) << placed.error().message;
    }

    void start(ExportSession& session) {
        ended = {};
        session.start(target, answer, [this](Result<void> result) { ended.set_value(std::move(result)); });
    }
    Result<void> waitForEnd() {
        auto future = ended.get_future();
        if (future.wait_for(std::chrono::seconds(60)) != std::future_status::ready)
            return fail(Error{"test", 3, "The export did not end.", {}});
        return future.get();
    }

    /// Exports to the end; the failure's words, empty when there is none.
    std::string failureOf(std::optional<VideoComposition> video, std::optional<AudioMix> mix = std::nullopt) {
        ExportSession session(composition, std::move(video), std::move(mix));
        EXPECT_EQ(session.status(), ExportSession::Status::unknown);
        start(session);
        const Result<void> result = waitForEnd();
        EXPECT_EQ(session.status(), result ? ExportSession::Status::completed : ExportSession::Status::failed);
        EXPECT_TRUE(!result || session.progress() == 1);
        return result ? "" : result.error().message;
    }

    TemporaryFolder folder;
    std::string target = folder / "out.mp4";
    std::shared_ptr<Composition> composition = std::make_shared<Composition>();
    SerialQueue answer{"test.answer"};
    std::promise<Result<void>> ended;
};

} // namespace keldra::test
