#include "media/Composition.h"

#include "Compositors.h"
#include "TestMovies.h"
#include "media/MediaError.h"
#include "media/VideoComposition.h"

namespace keldra {
namespace {

using namespace test;

MediaTime seconds(double value) {
    return MediaTime::fromSeconds(value, 60000);
}

MediaTimeRange span(double start, double end) {
    return {seconds(start), seconds(end) - seconds(start)};
}

class CompositionTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(recordTake(folder / "take.mov", MediaTime::zero(), {MediaTime::zero()}, MediaTime(4, 1)));
        asset = Asset::open(folder / "take.mov").value();
    }

    TemporaryFolder folder;
    AssetPtr asset;
    Composition composition;
};

TEST_F(CompositionTest, PlacesPiecesThatDoNotOverlapAndFindsThemAgain) {
    CompositionTrack& track = composition.addTrack(MediaKind::video);
    struct Row {
        const char* name;
        MediaTimeRange source;
        MediaTime target;
        std::optional<MediaError> refused;
    };
    const Row rows[] = {
        {"the first", span(0, 1), seconds(2), std::nullopt},
        {"before it, touching", span(1, 3), seconds(0), std::nullopt},
        {"after it, touching", span(0.5, 1), seconds(3), std::nullopt},
        {"after a gap", span(0, 1), seconds(5), std::nullopt},
        {"into the gap, too long", span(0, 2), seconds(3.5), MediaError::overlappingRange},
        {"over an end", span(0, 1), seconds(2.9), MediaError::overlappingRange},
        {"over a start", span(0, 1), seconds(4.9), MediaError::overlappingRange},
        {"inside", span(0, 0.1), seconds(0.5), MediaError::overlappingRange},
        {"around", span(0, 4), seconds(1.5), MediaError::overlappingRange},
        {"into the gap", span(0, 1.5), seconds(3.5), std::nullopt},
        {"empty", span(1, 1), seconds(9), MediaError::invalidRange},
        {"backwards", span(2, 1), seconds(9), MediaError::invalidRange},
        {"before zero", span(0, 1), seconds(-1), MediaError::invalidRange},
        {"without a number", span(0, 1), MediaTime::invalid(), MediaError::invalidRange},
        {"without an end", {seconds(0), MediaTime::indefinite()}, seconds(9), MediaError::invalidRange},
    };
    for (const Row& row : rows) {
        const auto placed = track.insertTimeRange(row.source, asset, 0, row.target);
        ASSERT_EQ(bool(placed), !row.refused) << row.name;
        if (row.refused) {
            EXPECT_EQ(placed.error(), mediaError(*row.refused, "")) << row.name;
        }
    }
    EXPECT_EQ(track.insertTimeRange(span(0, 1), asset, 1, seconds(9)).error(), mediaError(MediaError::noSuchTrack, ""));
    CompositionTrack& sound = composition.addTrack(MediaKind::audio);
    EXPECT_EQ(sound.insertTimeRange(span(0, 1), asset, 0, seconds(0)).error(), mediaError(MediaError::noSuchTrack, ""));

    EXPECT_EQ(composition.duration(), seconds(6));
    EXPECT_EQ(track.segments().size(), 5u);
    const std::vector<std::pair<double, double>> found{{0, 0},     {1.99, 0},    {2, 2}, {3, 3},
                                                       {3.5, 3.5}, {4.999, 3.5}, {5, 5}};
    for (const auto& [time, target] : found) {
        const CompositionSegment* segment = track.segmentAt(seconds(time));
        ASSERT_NE(segment, nullptr) << time;
        EXPECT_EQ(segment->target, seconds(target)) << time;
    }
    EXPECT_EQ(track.segmentAt(seconds(6)), nullptr);
    EXPECT_EQ(track.segmentAt(seconds(-0.1)), nullptr);
    EXPECT_EQ(composition.track(1), &track);
    EXPECT_EQ(composition.track(2), &sound);
    EXPECT_EQ(composition.track(0), nullptr);
    EXPECT_EQ(composition.track(3), nullptr);
}

TEST(FrameRequest, EndsExactlyOnce) {
    std::vector<std::string> ends;
    const auto request = [&ends] {
        return std::make_unique<FrameRequest>(
            showing({}, seconds(0), seconds(1)), seconds(0), TrackPictures{},
            std::make_shared<PixelBufferPool>(PixelFormat::bgra, 2, 2, 1), [&ends](FrameRequest::Outcome outcome) {
                ends.push_back(std::holds_alternative<PixelBuffer>(outcome) ? "picture"
                               : std::holds_alternative<Error>(outcome)     ? "error"
                                                                            : "cancelled");
            });
    };
    request();
    auto answered = request();
    EXPECT_FALSE(answered->sourceFrame(1));
    answered->finish(answered->newPixelBuffer());
    answered->finish(Error{"test", 1, "", {}});
    answered.reset();
    auto failed = request();
    failed->finish(Error{"test", 1, "", {}});
    failed->finishCancelled();
    failed.reset();
    EXPECT_EQ(ends, (std::vector<std::string>{"cancelled", "picture", "error"}));
}

} // namespace
} // namespace keldra
