#include "media/ExportSession.h"

#include "ExportFixture.h"
#include "media/FrameGenerator.h"

#include <csignal>
#include <random>
#include <sys/resource.h>

namespace keldra {
namespace {

using namespace test;
using namespace std::chrono_literals;

/// A take of two seconds, 60 a second with a hole: 0 to 59, then 60 at 1.5 s.
std::vector<MediaTime> takeWithAHole() {
    std::vector<MediaTime> times;
    for (int i = 0; i < 60; ++i)
        times.emplace_back(i, 60);
    times.emplace_back(3, 2);
    return times;
}

class ExportSessionTest : public ExportFixture {
protected:
    void SetUp() override {
        const auto recorded = recordTake(folder / "take.mov", MediaTime::zero(), takeWithAHole(), MediaTime(2, 1));
        ASSERT_TRUE(recorded) << recorded.error().message;
        asset = Asset::open(folder / "take.mov").value();
    }

    void place(const MediaTimeRange& source, MediaTime at) {
        if (composition->tracks().empty())
            composition->addTrack(MediaKind::video);
        ExportFixture::place(*composition->tracks().front(), asset, source, at);
    }
    /// The whole take on one track.
    void placeWhole() { place({MediaTime::zero(), MediaTime(2, 1)}, MediaTime::zero()); }

    VideoComposition videoAt(MediaTime frameDuration) const {
        return copying({1}, composition->duration(), frameDuration);
    }
    VideoComposition scripted(ScriptedCompositor::Script script) const {
        VideoComposition video = videoAt(MediaTime(1, 60));
        video.makeCompositor = [script] { return std::make_unique<ScriptedCompositor>(script); };
        return video;
    }
    std::vector<int> exportedNumbers() {
        std::vector<int> numbers;
        for (const ShownPicture& picture : picturesIn(target))
            numbers.push_back(picture.number);
        return numbers;
    }

    AssetPtr asset;
};

TEST_F(ExportSessionTest, GivesEveryFrameItsPictureAtAConstantRate) {
    placeWhole();
    ASSERT_EQ(failureOf(videoAt(MediaTime(1, 30))), "");
    std::vector<ShownPicture> expected;
    for (int i = 0; i < 60; ++i)
        expected.push_back({i < 30 ? 2 * i : i < 45 ? 59 : 60, MediaTime(i, 30)});
    EXPECT_EQ(picturesIn(target), expected);
    const auto exported = Asset::open(target);
    ASSERT_TRUE(exported);
    EXPECT_EQ((*exported)->duration(), MediaTime(2, 1));
    EXPECT_EQ((*exported)->tracks().front().nominalFrameRate, 30);
}

TEST_F(ExportSessionTest, ReadsADeepStackAsItsCompositorComesToIt) {
    // More tracks than files are held open; each shows the take a sixtieth later than the one before.
    constexpr int depth = 20;
    std::vector<std::int32_t> tracks;
    for (int at = 0; at < depth; ++at) {
        CompositionTrack& track = composition->addTrack(MediaKind::video);
        ExportFixture::place(track, asset, {MediaTime(at, 60), MediaTime(1, 10)});
        tracks.push_back(track.trackID());
    }
    std::atomic<bool> isVanishing = false;
    VideoComposition video = scripted([&](int number, const std::shared_ptr<FrameRequest>& request) {
        for (int at = 0; at < depth; ++at) {
            if (const PixelBuffer picture = request->sourceFrame(tracks[std::size_t(at)])) {
                EXPECT_EQ(numberIn(picture), number + at);
            }
        }
        if (isVanishing)
            std::filesystem::remove(asset->path());
        request->finish(paintedPicture(number));
    });
    video.instructions = {showing(tracks, MediaTime::zero(), composition->duration())};
    ASSERT_EQ(failureOf(video), "");
    EXPECT_EQ(exportedNumbers(), (std::vector<int>{0, 1, 2, 3, 4, 5}));

    std::filesystem::remove(target);
    isVanishing = true;
    EXPECT_EQ(failureOf(video), "take.mov: No such file or directory");
    EXPECT_EQ(folder.names(), std::vector<std::string>());
}

TEST_F(ExportSessionTest, FollowsCutsGapsAndRepeatsAndRoundsTheLengthUp) {
    // 0.5-0.75 s, the same again, a gap, then a piece from before; the end lies within a frame.
    place({MediaTime(1, 2), MediaTime(1, 4)}, MediaTime::zero());
    place({MediaTime(1, 2), MediaTime(1, 4)}, MediaTime(1, 4));
    place({MediaTime(0, 1), MediaTime(41, 400)}, MediaTime(1, 1));
    VideoComposition video = videoAt(MediaTime(1, 20));
    video.instructions = {showing({1}, MediaTime::zero(), MediaTime(1, 2)),
                          showing({}, MediaTime(1, 2), MediaTime(1, 1)),
                          showing({1}, MediaTime(1, 1), composition->duration())};
    ASSERT_EQ(failureOf(video), "");
    const std::vector<int> expected{30, 33, 36, 39, 42, 30, 33, 36, 39, 42, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 6};
    EXPECT_EQ(exportedNumbers(), expected);

    FrameGenerator generator(composition, video);
    for (const int index : {22, 3, 12, 5, 0, 21}) {
        const auto frame = generator.frameAt(MediaTime(index, 20));
        ASSERT_TRUE(frame) << frame.error().message;
        EXPECT_EQ(numberIn(*frame), expected[std::size_t(index)]) << index;
    }
    EXPECT_FALSE(generator.frameAt(composition->duration()));
}

TEST_F(ExportSessionTest, PutsFramesIntoOrderWhateverOrderTheyComeIn) {
    placeWhole();
    // Answers in pairs, the later one first; requests of one stretch without change are not even made.
    auto held = std::make_shared<std::vector<std::shared_ptr<FrameRequest>>>();
    auto asked = std::make_shared<std::atomic<int>>(0);
    const auto inPairs = [held, asked](int, std::shared_ptr<FrameRequest> request) {
        *asked += 1;
        held->push_back(std::move(request));
        if (held->size() < 2 && *asked < 61)
            return;
        for (auto it = held->rbegin(); it != held->rend(); ++it)
            (*it)->finish((*it)->sourceFrame(1));
        held->clear();
    };
    ASSERT_EQ(failureOf(scripted(inPairs)), "");
    std::vector<int> expected;
    for (int i = 0; i < 120; ++i)
        expected.push_back(i < 60 ? i : i < 90 ? 59 : 60);
    EXPECT_EQ(exportedNumbers(), expected);
    EXPECT_EQ(*asked, 61);
}

TEST_F(ExportSessionTest, AsksForEveryFrameWhereThePictureChangesByItself) {
    placeWhole();
    auto asked = std::make_shared<std::atomic<int>>(0);
    VideoComposition video = scripted([asked](int, const std::shared_ptr<FrameRequest>& request) {
        *asked += 1;
        request->finish(request->sourceFrame(1));
    });
    const auto tweening = showing({1}, MediaTime::zero(), composition->duration());
    tweening->containsTweening = true;
    video.instructions = {tweening};
    ASSERT_EQ(failureOf(video), "");
    EXPECT_EQ(*asked, 120);
}

TEST_F(ExportSessionTest, FailsWithTheReasonAndLeavesNoFile) {
    placeWhole();
    // From the twentieth frame on the compositor answers with something else, or not at all.
    using Answer = std::function<void(FrameRequest&)>;
    const std::pair<Answer, std::string> rows[] = {
        {[](FrameRequest& request) {
             request.finish(Error{"test", 9, "It broke.", {}});
         },
         "It broke."},
        {[](FrameRequest&) {}, "A frame could not be composed."},
        {[](FrameRequest& request) { request.finish(PixelBuffer::allocate(PixelFormat::bgra, 10, 10)); },
         "A composed frame has another size than the export."},
    };
    for (const auto& [answerOtherwise, message] : rows) {
        const auto script = [answer = answerOtherwise](int number, const std::shared_ptr<FrameRequest>& request) {
            number < 20 ? request->finish(request->sourceFrame(1)) : answer(*request);
        };
        EXPECT_EQ(failureOf(scripted(script)), message);
        EXPECT_FALSE(std::filesystem::exists(target));
    }
    EXPECT_EQ(failureOf(std::nullopt), "There is no picture and no sound to export.");
    VideoComposition hole = videoAt(MediaTime(1, 30));
    hole.instructions = {showing({1}, MediaTime::zero(), MediaTime(1, 1))};
    EXPECT_EQ(failureOf(hole), "The video timeline cannot be exported.");
}

TEST_F(ExportSessionTest, NeverTouchesAFileThatExists) {
    placeWhole();
    writeBytes(target, {'m', 'i', 'n', 'e'});
    EXPECT_EQ(failureOf(videoAt(MediaTime(1, 30))), "out.mp4: File exists");
    EXPECT_EQ(bytesOf(target), (std::vector<char>{'m', 'i', 'n', 'e'}));
}

TEST_F(ExportSessionTest, EndsAtAnyMomentWithNoThreadAndNoPartLeft) {
    placeWhole();
    writeWav(folder / "clicks.wav", clicks(2, {4800}, 48000, 2));
    const AssetPtr sound = Asset::open(folder / "clicks.wav").value();
    ExportFixture::place(composition->addTrack(MediaKind::audio), sound, {MediaTime::zero(), MediaTime(2, 1)});
    const auto threadCount = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
    const auto before = threadCount();
    std::mt19937 random(5);
    for (int turn = 0; turn < 24; ++turn) {
        SCOPED_TRACE(turn);
        std::promise<void> reached;
        const int frame = std::uniform_int_distribution(0, 60)(random);
        std::optional<ExportSession> session;
        session.emplace(composition, scripted([&reached, frame](int number, const auto& request) {
                            if (number == frame)
                                reached.set_value();
                            request->finish(request->sourceFrame(1));
                        }));
        start(*session);
        ASSERT_EQ(reached.get_future().wait_for(60s), std::future_status::ready);
        if (turn % 2 == 0)
            session->cancel();
        else
            session.reset();
        // Just done before it, sometimes: the file tells the same as the answer.
        const auto result = waitForEnd();
        EXPECT_EQ(std::filesystem::exists(target), bool(result));
        session.reset();
        EXPECT_EQ(threadCount(), before);
        std::filesystem::remove(target);
    }
}

TEST_F(ExportSessionTest, TellsAFullDiskInTheSystemsWords) {
    placeWhole();
    // A limit on file sizes stands for the disk's end.
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit small = old;
    small.rlim_cur = 4096;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string failure = failureOf(videoAt(MediaTime(1, 60)));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    std::signal(SIGXFSZ, previous);
    EXPECT_EQ(failure, "out.mp4: File too large");
    EXPECT_FALSE(std::filesystem::exists(target));
}

} // namespace
} // namespace keldra
