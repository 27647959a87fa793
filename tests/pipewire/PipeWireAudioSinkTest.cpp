// The sink against a real daemon: what is written is heard, when the sink says so, and the daemon may come and go.

#include "platform/pipewire/PipeWireAudioSink.h"

#include "Listener.h"
#include "SoundSession.h"
#include "base/SerialQueue.h"

#include <cmath>
#include <condition_variable>
#include <deque>

namespace keldra::test {
namespace {

using namespace std::chrono_literals;

using Positions = std::vector<std::optional<AudioSink::Position>>;

/// A user of the sink: a queue of its own writes whatever fits, and looks at the position each time.
class Feeder {
public:
    explicit Feeder(AudioSink& sink) : m_sink(sink) {}
    ~Feeder() { stop(); }

    /// Frames bear their numbers: left rises by 1/65536 a frame, right is the negative of it.
    void play() {
        m_queue.sync([this] {
            m_sink.reset();
            m_next = 1;
            fill();
            m_sink.start();
        });
        m_feeding = m_queue.every(10ms, [this] { fill(); });
    }
    void stop() {
        m_feeding.cancel();
        m_queue.sync([this] { m_sink.reset(); });
    }
    /// Waits until it holds, looking again whenever it has been to the sink.
    template <typename Predicate>
    [[nodiscard]] bool waitUntil(Predicate predicate) {
        std::unique_lock guard(m_lock);
        return m_fed.wait_for(guard, 20s, [&] { return predicate(m_positions); });
    }
    /// Until it last told a position beyond that.
    [[nodiscard]] bool waitForFrame(double frame) {
        return waitUntil([frame](const Positions& told) { return isBeyond(told, frame); });
    }
    static bool isBeyond(const Positions& told, double frame) {
        return !told.empty() && told.back() && told.back()->frame > frame;
    }
    Positions positions() const {
        const std::lock_guard guard(m_lock);
        return m_positions;
    }
    void forgetPositions() {
        const std::lock_guard guard(m_lock);
        m_positions.clear();
    }

    static constexpr double step = 1.0 / 65536;

private:
    void fill() {
        constexpr std::size_t count = 480;
        while (true) {
            std::array<float, 2 * count> frames;
            for (std::size_t i = 0; i < count; ++i) {
                frames[2 * i] = float(double((m_next + std::int64_t(i)) % 65536) * step);
                frames[2 * i + 1] = -frames[2 * i];
            }
            const std::size_t taken = m_sink.write(frames.data(), count);
            m_next += std::int64_t(taken);
            if (taken < count)
                break;
        }
        const std::lock_guard guard(m_lock);
        m_positions.push_back(m_sink.position());
        m_fed.notify_all();
    }

    AudioSink& m_sink;
    std::int64_t m_next = 1;
    mutable std::mutex m_lock;
    std::condition_variable m_fed;
    Positions m_positions;
    Timer m_feeding;
    SerialQueue m_queue{"Feeder"};
};

using PipeWireAudioSinkTest = SoundSession;

double frameOf(const Listener::Frame& frame) {
    return std::round(double(frame.left) / Feeder::step) - 1;
}

TEST_F(PipeWireAudioSinkTest, TellsWhatIsHeardWhen) {
    startDaemon();
    Listener listener;
    ASSERT_TRUE(listener.isConnected());
    PipeWireAudioSink sink;
    Feeder feeder(sink);
    feeder.play();
    constexpr double enough = 60'000;
    ASSERT_TRUE(feeder.waitForFrame(enough));
    feeder.stop();

    const std::vector<Listener::Frame> heard = listener.heard();
    ASSERT_GT(heard.size(), 0.9 * enough);
    for (const Listener::Frame& frame : heard)
        ASSERT_EQ(frame.left, -frame.right);

    double last = 0;
    double worst = 0;
    int compared = 0;
    for (const auto& position : feeder.positions()) {
        if (!position)
            continue;
        EXPECT_GE(position->frame, last);
        last = position->frame;
        const std::int64_t at = position->hostTime.value() * 1000;
        const auto then =
            std::lower_bound(heard.begin(), heard.end(), at,
                             [](const Listener::Frame& frame, std::int64_t time) { return frame.heardAt < time; });
        // Numbers begin again after 65535.
        if (then == heard.end() || then->heardAt - at > 1'000'000)
            continue;
        worst = std::max(worst, std::abs(frameOf(*then) - position->frame));
        ++compared;
    }
    EXPECT_GT(compared, 20);
    EXPECT_LT(worst / AudioSink::sampleRate, 0.020);
}

TEST_F(PipeWireAudioSinkTest, ForgetsWhatWasWritten) {
    startDaemon();
    Listener listener;
    PipeWireAudioSink sink;
    Feeder feeder(sink);
    ASSERT_FALSE(sink.position());
    const std::vector<float> wrong(2 * 4800, 0.9F);
    EXPECT_EQ(sink.write(wrong.data(), 4800), 4800U);
    feeder.play();
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_TRUE(feeder.waitForFrame(9'600));
        listener.forget();
        feeder.forgetPositions();
        feeder.play();
    }
    ASSERT_TRUE(feeder.waitForFrame(4'800));
    feeder.stop();
    EXPECT_FALSE(sink.position());
    const Positions told = feeder.positions();
    const auto first =
        std::find_if(told.begin(), told.end(), [](const auto& position) { return position.has_value(); });
    EXPECT_LT((*first)->frame, 9'600) << "counts from zero again";
    for (const Listener::Frame& frame : listener.heard())
        ASSERT_LT(frame.left, 0.8F);
}

TEST_F(PipeWireAudioSinkTest, LivesWithoutItsDaemon) {
    PipeWireAudioSink sink;
    Feeder feeder(sink);
    feeder.play();
    EXPECT_FALSE(sink.hasDevice());
    const auto isHeard = [&](const Positions& told) { return sink.hasDevice() && Feeder::isBeyond(told, 4'800); };
    for (int turn = 0; turn < 2; ++turn) {
        startDaemon();
        EXPECT_TRUE(feeder.waitUntil(isHeard)) << "turn " << turn;
        stopDaemon();
        EXPECT_TRUE(feeder.waitUntil([&](const Positions& told) { return !sink.hasDevice() && !told.back(); }));
        feeder.forgetPositions();
        EXPECT_TRUE(feeder.waitUntil([](const Positions& told) { return told.size() > 5; })) << "nothing blocks";
        for (const auto& position : feeder.positions())
            EXPECT_FALSE(position);
    }
    // What is written after its return is heard, once its user begins anew.
    startDaemon();
    Listener listener;
    ASSERT_TRUE(feeder.waitUntil(isHeard));
    listener.forget();
    feeder.forgetPositions();
    feeder.play();
    ASSERT_TRUE(feeder.waitUntil(isHeard));
    EXPECT_TRUE(feeder.waitUntil([&](const Positions&) { return listener.heard().size() > 9'600; }));
}

} // namespace
} // namespace keldra::test
