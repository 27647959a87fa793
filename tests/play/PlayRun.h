#pragma once

#include "PictureWindow.h"
#include "async/Scheduler.h"
#include "media/Player.h"

#include <memory>
#include <random>
#include <vector>

namespace keldra::play {

struct PlayOptions {
    double rate = 1;
    /// Where on the time line it begins, in seconds; from its end in reverse when it is not set.
    std::optional<double> from;
    /// For how long at most, in seconds of the clock on the wall.
    std::optional<double> seconds;
    /// So many random seeks instead of playing.
    int seekCount = 0;
};

/// Plays an item and measures how well; tells each second, and in the end, on standard output. Main thread.
class PlayRun {
public:
    /// `window` may be null: pictures are taken all the same.
    PlayRun(Executor& main, std::shared_ptr<const HostClock> clock, std::unique_ptr<AudioSink> sink,
            std::shared_ptr<PlayerItem> item, PictureWindow* window, PlayOptions options);

    /// `ended` hears whether it went well.
    void start(std::function<void(bool)> ended);

private:
    void begin();
    void refresh();
    void tellSecond();
    void seekNext();
    void finishPlay();
    void finishSeeks();
    void end(bool isWell);

    Executor& m_main;
    const std::shared_ptr<const HostClock> m_clock;
    PictureWindow* const m_window;
    const PlayOptions m_options;
    const std::shared_ptr<PlayerItem> m_item;
    std::function<void(bool)> m_ended;
    bool m_hasBegun = false;

    MediaTime m_startedAt;
    std::optional<MediaTime> m_movingSince;
    std::int64_t m_shownCount = 0;
    std::int64_t m_droppedBefore = 0;
    /// At each refresh with sound, in milliseconds.
    std::vector<double> m_drifts;
    /// Milliseconds.
    std::vector<double> m_seekTimes;
    std::mt19937 m_random{1};

    Player m_player;
    Timer m_refreshing;
    Timer m_telling;
};

} // namespace keldra::play
