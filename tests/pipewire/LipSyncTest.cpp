// Pictures and sound of one moment, judged from outside the player: when pictures are given out to be shown, and when
// the output of the session plays.

#include "Listener.h"
#include "SoundSession.h"
#include "base/SerialQueue.h"
#include "media/Compositors.h"
#include "media/Player.h"
#include "media/TestMovies.h"
#include "platform/pipewire/PipeWireAudioSink.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>

namespace keldra::test {
namespace {

using namespace std::chrono_literals;

/// Every half second a white frame and the beginning of a tone of 50 ms.
constexpr int flashCount = 8;
constexpr double flashPeriod = 0.5;

std::shared_ptr<PlayerItem> makeFlashes(const TemporaryFolder& folder) {
    const std::string path = folder / "flashes.mov";
    const std::string seconds = std::to_string(flashCount * flashPeriod);
    runFfmpeg("-f lavfi -i \"color=black:s=128x64:r=60:d=" + seconds +
              ",format=gray,geq=lum='if(eq(mod(N,30),15),255,0)'\" -f lavfi -i \"aevalsrc="
              "'if(between(mod(t,0.5),0.25,0.3),0.5*sin(2*PI*1000*t),0)':s=48000:d=" +
              seconds + "\" -c:v libx264 -g 60 -pix_fmt yuv420p -c:a pcm_s16le '" + path + "'");
    const AssetPtr asset = Asset::open(path).value();
    const MediaTimeRange whole{MediaTime::zero(), MediaTime(int(flashCount * flashPeriod), 1)};
    auto composition = std::make_shared<Composition>();
    EXPECT_TRUE(composition->addTrack(MediaKind::video).insertTimeRange(whole, asset, 0, MediaTime::zero()));
    EXPECT_TRUE(composition->addTrack(MediaKind::audio).insertTimeRange(whole, asset, 1, MediaTime::zero()));
    return std::make_shared<PlayerItem>(composition, copying({1}, whole.end(), MediaTime(1, 60)), std::nullopt);
}

/// When each stretch of sound began, in seconds of the host clock.
std::vector<double> beginnings(const std::vector<Listener::Frame>& heard) {
    std::vector<double> begun;
    double last = 0;
    for (const Listener::Frame& frame : heard) {
        const double at = double(frame.heardAt) / 1e9;
        if (at - last > 0.1)
            begun.push_back(at);
        last = at;
    }
    return begun;
}

class LipSyncTest : public SoundSession {};

TEST_F(LipSyncTest, APictureIsShownWhenItsSoundIsHeard) {
    startDaemon();
    Listener listener;
    ASSERT_TRUE(listener.isConnected());
    const TemporaryFolder folder;
    const auto item = makeFlashes(folder);
    const auto clock = std::make_shared<SystemHostClock>();

    std::mutex lock;
    std::condition_variable changed;
    std::vector<double> flashes;
    bool hasEnded = false;
    SerialQueue main("main");
    std::optional<Player> player;
    Timer refreshing;
    main.sync([&] {
        player.emplace(main, clock, std::make_unique<PipeWireAudioSink>(), Player::Options());
        item->setStatusObserver([&] { player->setRate(1); });
        player->replaceCurrentItem(item);
        // A screen far quicker than any: what is left is the player's own error.
        refreshing = main.every(2ms, [&, wasWhite = false]() mutable {
            const MediaTime now = clock->now();
            const PixelBuffer picture = player->takePicture(now);
            const bool isWhite = picture ? *picture.row(0, 32) > 128 : wasWhite;
            const std::lock_guard guard(lock);
            if (isWhite && !wasWhite)
                flashes.push_back(now.seconds());
            wasWhite = isWhite;
            hasEnded = player->rate() == 0 && !flashes.empty();
            if (hasEnded)
                changed.notify_all();
        });
    });
    {
        std::unique_lock guard(lock);
        EXPECT_TRUE(changed.wait_for(guard, 30s, [&] { return hasEnded; }));
    }
    main.sync([&] {
        refreshing.cancel();
        player.reset();
    });

    std::vector<double> distances;
    for (const double sound : beginnings(listener.heard()))
        for (const double flash : flashes)
            if (std::abs(flash - sound) < flashPeriod / 2)
                distances.push_back(std::abs(flash - sound));
    ASSERT_GE(distances.size(), std::size_t(flashCount) - 2);
    std::sort(distances.begin(), distances.end());
    RecordProperty("median_ms", std::to_string(distances[distances.size() / 2] * 1000));
    EXPECT_LT(distances[distances.size() / 2], 0.020);
}

} // namespace
} // namespace keldra::test
