// A player shows the right frame at the right moment, in either direction, and follows what is heard.

#include "media/Player.h"

#include "Compositors.h"
#include "TestMovies.h"
#include "doubles/PumpedExecutor.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace keldra::test {
namespace {

class ManualClock final : public HostClock {
public:
    MediaTime now() const override { return MediaTime(m_microseconds, timescale); }
    void advance(double seconds) { m_microseconds += std::llround(seconds * timescale); }

private:
    std::atomic<std::int64_t> m_microseconds = 1'000'000'000;
};

/// A device that plays what it is given, by the test's clock times `speed`.
class ScriptedSink final : public AudioSink {
public:
    explicit ScriptedSink(std::shared_ptr<ManualClock> clock) : m_clock(std::move(clock)) {}

    bool hasDevice() const override { return isThere; }
    std::size_t write(const float* frames, std::size_t count) override {
        const std::lock_guard guard(m_lock);
        constexpr std::size_t room = 9600;
        const std::size_t queued = m_written.size() / 2 - std::size_t(played());
        const std::size_t taken = std::min(count, room - std::min(queued, room));
        m_written.insert(m_written.end(), frames, frames + 2 * taken);
        return taken;
    }
    void start() override {
        const std::lock_guard guard(m_lock);
        m_started = m_clock->now();
    }
    void reset() override {
        const std::lock_guard guard(m_lock);
        m_started.reset();
        m_written.clear();
    }
    std::optional<Position> position() const override {
        const std::lock_guard guard(m_lock);
        if (!m_started || !isThere)
            return std::nullopt;
        return Position{played(), m_clock->now()};
    }
    std::vector<float> written() const {
        const std::lock_guard guard(m_lock);
        return m_written;
    }

    std::atomic<double> speed = 1;
    std::atomic<bool> isThere = true;

private:
    double played() const {
        const double seconds = m_started ? (m_clock->now() - *m_started).seconds() : 0;
        return std::min(seconds * speed * sampleRate, double(m_written.size() / 2));
    }

    std::shared_ptr<ManualClock> m_clock;
    mutable std::mutex m_lock;
    std::optional<MediaTime> m_started;
    std::vector<float> m_written;
};

constexpr int rate = 30;
constexpr int frameTotal = 90;

/// Three seconds of numbered frames, and a tone when a test wants sound.
class PlayerTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<TemporaryFolder>();
        runFfmpeg(paintedSource(rate, 3) + "-f lavfi -i sine=d=3:r=48000 -c:v libx264 -g 30 -bf 2 -pix_fmt yuv420p " +
                  "-c:a pcm_s16le '" + path() + "'");
    }
    static void TearDownTestSuite() { folder.reset(); }
    static std::string path() { return *folder / "numbered.mov"; }

    std::shared_ptr<PlayerItem> makeItem(bool hasSound, const std::string& file = path()) {
        const AssetPtr asset = Asset::open(file).value();
        auto composition = std::make_shared<Composition>();
        const MediaTimeRange whole{MediaTime::zero(), MediaTime(3, 1)};
        EXPECT_TRUE(composition->addTrack(MediaKind::video).insertTimeRange(whole, asset, 0, MediaTime::zero()));
        if (hasSound) {
            EXPECT_TRUE(composition->addTrack(MediaKind::audio).insertTimeRange(whole, asset, 1, MediaTime::zero()));
        }
        return std::make_shared<PlayerItem>(composition, copying({1}, MediaTime(3, 1), MediaTime(1, rate)),
                                            std::nullopt);
    }
    void open(std::shared_ptr<PlayerItem> item) {
        player.replaceCurrentItem(item);
        EXPECT_TRUE(main.pumpUntil([&] { return item->status() == PlayerItem::Status::readyToPlay; }));
        EXPECT_EQ(shown(), 0);
    }
    /// The number of a new frame, or -1.
    int shown() {
        const PixelBuffer picture = player.takePicture(clock->now());
        return picture ? numberIn(picture) : -1;
    }
    /// Goes on by one refresh of a screen that waits for its frame.
    testing::AssertionResult refreshesTo(int number, double seconds) {
        clock->advance(seconds);
        main.fire();
        std::vector<int> numbers;
        const bool isShown = main.pumpUntil([&] {
            if (const int next = shown(); next >= 0)
                numbers.push_back(next);
            main.post([] {});
            return !numbers.empty() && numbers.back() == number;
        });
        return (isShown ? testing::AssertionSuccess() : testing::AssertionFailure())
               << "wanted " << number << ", saw " << testing::PrintToString(numbers);
    }
    /// Goes on, with time standing still, until it holds.
    template <typename Predicate>
    bool fireUntil(Predicate predicate) {
        return main.pumpUntil([&] {
            main.fire();
            main.post([] {});
            return predicate();
        });
    }
    void letPass(double seconds) {
        for (double step = 0.01; seconds > 0; seconds -= step) {
            clock->advance(step);
            main.fire();
            // Sound is fed on a thread of its own.
            std::this_thread::yield();
        }
    }
    bool seek(double seconds) {
        std::optional<bool> answer;
        player.seek(MediaTime::fromSeconds(seconds, 600), [&](bool done) { answer = done; });
        EXPECT_TRUE(main.pumpUntil([&] { return answer.has_value(); }));
        return answer.value_or(false);
    }
    /// Until it plays: the first picture is there, or the first sound.
    void begin(double playRate) {
        player.setRate(playRate);
        EXPECT_EQ(player.timeControlStatus(), Player::TimeControlStatus::waiting);
        EXPECT_TRUE(fireUntil([&] { return player.timeControlStatus() == Player::TimeControlStatus::playing; }));
    }

    static std::unique_ptr<TemporaryFolder> folder;
    PumpedExecutor main;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    ScriptedSink* sink = new ScriptedSink(clock);
    Player player{main, clock, std::unique_ptr<AudioSink>(sink), {}};
};

std::unique_ptr<TemporaryFolder> PlayerTest::folder;

TEST_F(PlayerTest, SeeksToTheExactFrame) {
    open(makeItem(false));
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        const int wanted = int(random() % frameTotal);
        ASSERT_TRUE(seek(double(wanted) / rate));
        ASSERT_EQ(shown(), wanted);
        EXPECT_NEAR(player.currentTime().seconds(), double(wanted) / rate, 0.001);
    }
    EXPECT_TRUE(seek(99));
    EXPECT_EQ(shown(), frameTotal - 1);
    EXPECT_EQ(player.currentTime(), MediaTime(3, 1));
    EXPECT_TRUE(seek(-1));
    EXPECT_EQ(shown(), 0);
    EXPECT_EQ(player.droppedFrameCount(), 0);
}

TEST_F(PlayerTest, ALaterSeekEndsTheOneBefore) {
    open(makeItem(false));
    std::vector<std::pair<int, bool>> answers;
    for (int i = 0; i < 3; ++i)
        player.seek(MediaTime(i * 20, rate), [&, i](bool done) { answers.emplace_back(i, done); });
    EXPECT_TRUE(main.pumpUntil([&] { return answers.size() == 3; }));
    EXPECT_THAT(answers, testing::ElementsAre(std::pair(0, false), std::pair(1, false), std::pair(2, true)));
    EXPECT_EQ(shown(), 40);
    bool answer = true;
    player.seek(MediaTime(1, 1), [&](bool done) { answer = done; });
    player.replaceCurrentItem(nullptr);
    EXPECT_TRUE(main.pumpUntil([&] { return !answer; }));
}

TEST_F(PlayerTest, PlaysEitherWayAtEveryRate) {
    open(makeItem(false));
    struct Row {
        double from;
        double rate;
        std::vector<int> expected;
    };
    const Row rows[] = {{0.5, 1, {16, 17, 18, 19, 20, 21}},  {0.5, 2, {17, 19, 21, 23}},
                        {2.5, -1, {74, 73, 72, 71, 70, 69}}, {2, -2, {58, 56, 54, 52}},
                        {1.1, -1, {32, 31, 30, 29, 28, 27}}, {1, -0.5, {29, 28, 27}}};
    for (const Row& row : rows) {
        ASSERT_TRUE(seek(row.from));
        ASSERT_EQ(shown(), int(std::lround(row.from * rate)));
        begin(row.rate);
        const double step = std::abs(row.rate) < 1 ? 1.0 / rate / std::abs(row.rate) : 1.0 / rate;
        for (const int number : row.expected)
            ASSERT_TRUE(refreshesTo(number, step)) << "from " << row.from << " at " << row.rate;
        player.pause();
        EXPECT_EQ(player.timeControlStatus(), Player::TimeControlStatus::paused);
    }
}

TEST_F(PlayerTest, MakesNoMoreFramesThanAScreenShows) {
    open(makeItem(false));
    for (const double playRate : {4.0, -4.0}) {
        const double from = playRate > 0 ? 0.5 : 2.5;
        ASSERT_TRUE(seek(from));
        ASSERT_EQ(shown(), int(std::lround(from * rate)));
        begin(playRate);
        EXPECT_EQ(shown(), int(std::lround(from * rate)));
        const std::int64_t before = player.droppedFrameCount();
        const int direction = playRate > 0 ? 1 : -1;
        for (int i = 1; i <= 20; ++i)
            ASSERT_TRUE(refreshesTo(int(from * rate) + direction * 2 * i, 1.0 / 60)) << "at " << playRate;
        EXPECT_EQ(player.droppedFrameCount(), before);
        player.pause();
    }
}

TEST_F(PlayerTest, StopsAtItsEndAndTellsWhere) {
    open(makeItem(false));
    std::vector<double> told;
    const Timer observing = player.addPeriodicTimeObserver(std::chrono::microseconds(33333),
                                                           [&](MediaTime time) { told.push_back(time.seconds()); });
    ASSERT_TRUE(seek(2.5));
    begin(1);
    letPass(0.3);
    EXPECT_NEAR(double(told.size()), 10, 2);
    letPass(0.4);
    EXPECT_EQ(player.rate(), 0);
    EXPECT_TRUE(main.pumpUntil([&] { return told.back() == 3.0; }));
    EXPECT_TRUE(main.pumpUntil([&] { return shown() == frameTotal - 1; }));
    // In reverse it stays at the beginning; who plays it stops it.
    ASSERT_TRUE(seek(0.1));
    begin(-1);
    letPass(0.5);
    EXPECT_EQ(player.rate(), -1);
    EXPECT_EQ(player.currentTime(), MediaTime::zero());
}

TEST_F(PlayerTest, FollowsWhatIsHeard) {
    open(makeItem(true));
    sink->speed = 1.02;
    begin(1);
    EXPECT_GE(sink->written().size(), 2u * 4800);
    for (int i = 1; i <= 100; ++i) {
        clock->advance(0.01);
        const double heard = 1.02 * 0.01 * i;
        ASSERT_TRUE(fireUntil([&] { return std::abs(player.currentTime().seconds() - heard) < 0.0001; })) << i;
    }
    EXPECT_TRUE(player.driftFromSound());

    // Without its device it goes on by the host clock.
    sink->isThere = false;
    const double before = player.currentTime().seconds();
    letPass(1);
    EXPECT_NEAR(player.currentTime().seconds(), before + 1, 0.05);
    EXPECT_FALSE(player.driftFromSound()) << "nothing is heard";
    // When it is back, it sounds from there on.
    sink->speed = 1;
    sink->isThere = true;
    EXPECT_TRUE(fireUntil([&] { return player.driftFromSound().has_value(); }));
    EXPECT_GT(player.currentTime().seconds(), before + 0.9);
    sink->isThere = false;
    player.setRate(0.5);
    letPass(0.7);
    EXPECT_GT(player.currentTime().seconds(), before + 1);
}

TEST_F(PlayerTest, ChangesOfLookAndLoudnessDoNotStopIt) {
    const auto item = makeItem(true);
    open(item);
    begin(1);
    AudioMix silent;
    silent.parameters.emplace_back(2).setVolume(0, MediaTime::zero());
    item->setAudioMix(silent);
    item->setVideoComposition(*item->videoComposition());
    EXPECT_EQ(player.timeControlStatus(), Player::TimeControlStatus::playing);
    player.pause();
    EXPECT_TRUE(main.pumpUntil([&] { return shown() >= 0; }));
    bool isThere = false;
    player.setPictureObserver([&] { isThere = true; });
    item->setVideoComposition(*item->videoComposition());
    EXPECT_TRUE(main.pumpUntil([&] { return isThere && shown() >= 0; })) << "a standing picture is drawn anew";
    begin(1);
    EXPECT_TRUE(main.pumpUntil([&] { return sink->written().size() > 9600; }));
    const std::vector<float> written = sink->written();
    EXPECT_THAT(written, testing::Each(0.0F));
}

TEST_F(PlayerTest, TellsWhatFails) {
    const std::string copy = *folder / "vanishing.mov";
    std::filesystem::copy_file(path(), copy);
    const auto vanished = makeItem(false, copy);
    std::filesystem::remove(copy);
    player.replaceCurrentItem(vanished);
    bool wasTold = false;
    vanished->setStatusObserver([&] { wasTold = true; });
    EXPECT_TRUE(main.pumpUntil([&] { return vanished->status() == PlayerItem::Status::failed; }));
    EXPECT_TRUE(wasTold);
    EXPECT_THAT(vanished->error()->message, testing::HasSubstr("vanishing.mov"));
    EXPECT_FALSE(seek(1));

    // A piece that cannot be read in mid-play.
    std::filesystem::copy_file(path(), copy);
    const auto item = makeItem(false);
    auto composition = std::make_shared<Composition>();
    CompositionTrack& track = composition->addTrack(MediaKind::video);
    const MediaTimeRange second{MediaTime::zero(), MediaTime(1, 1)};
    EXPECT_TRUE(track.insertTimeRange(second, Asset::open(path()).value(), 0, MediaTime::zero()));
    EXPECT_TRUE(track.insertTimeRange(second, Asset::open(copy).value(), 0, MediaTime(1, 1)));
    std::filesystem::remove(copy);
    VideoComposition video = *item->videoComposition();
    video.instructions = {showing({1}, MediaTime::zero(), MediaTime(2, 1))};
    const auto broken = std::make_shared<PlayerItem>(composition, video, std::nullopt);
    std::optional<Error> failure;
    broken->setFailureObserver([&](const Error& error) { failure = error; });
    open(broken);
    begin(1);
    EXPECT_TRUE(main.pumpUntil([&] {
        letPass(0.03);
        shown();
        main.post([] {});
        return failure.has_value();
    }));
    EXPECT_EQ(player.rate(), 0);
}

TEST(PictureCache, KeepsWhatWasUsedLast) {
    const auto picture = [] { return PixelBuffer::allocate(PixelFormat::i420, 64, 64); };
    const std::size_t bytes = 64 * 64 + 2 * 64 * 32; // rows are aligned to 64
    PictureCache cache(3 * bytes);
    const PictureCache::TrackKey key{"/a.mov", 0};
    const auto at = [](int second) { return MediaTimeRange{MediaTime(second, 1), MediaTime(1, 1)}; };
    for (int second = 0; second < 3; ++second)
        cache.insert(key, at(second), picture());
    EXPECT_EQ(cache.keptFrom(key, MediaTime(5, 2)), MediaTime::zero());
    EXPECT_TRUE(cache.find(key, MediaTime(1, 2)));
    cache.insert(key, at(3), picture());
    EXPECT_FALSE(cache.find(key, MediaTime(3, 2))) << "used longest ago";
    EXPECT_EQ(cache.keptFrom(key, MediaTime(7, 2)), MediaTime(2, 1));
    EXPECT_EQ(cache.keptFrom(key, MediaTime(9, 1)), std::nullopt);
    EXPECT_FALSE(cache.find({"/a.mov", 1}, MediaTime::zero()));
    cache.insert(key, at(3), picture());
    EXPECT_EQ(cache.usedBytes(), 3 * bytes);
    cache.insert(key, {MediaTime(4, 1), MediaTime::indefinite()}, picture());
    EXPECT_TRUE(cache.find(key, MediaTime(400, 1)));
}

} // namespace
} // namespace keldra::test
