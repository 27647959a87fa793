#pragma once

#include "base/Executor.h"
#include "base/HostClock.h"
#include "media/AudioSink.h"
#include "media/PictureCache.h"
#include "media/PlaybackClock.h"
#include "media/PlayerFrames.h"
#include "media/PlayerItem.h"
#include "media/PlayerSound.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace keldra {

/// Plays an item in either direction. While sound is heard it is the clock, and pictures follow it; otherwise, and
/// always in reverse, the host clock is. Late frames are left out, sound never is.
///
/// Threads: everything here on `main`, where callbacks run too.
/// Time:    of the item's time line.
class Player {
public:
    enum class TimeControlStatus {
        paused,
        waiting, ///< for the first picture or sound from where it plays; time stands still
        playing
    };

    struct Options {
        /// For decoded pictures that are kept for scrubbing and reverse play.
        std::size_t cacheBytes = std::size_t(384) << 20;
    };

    /// `sink` may be null: nothing is heard then. `main` must outlive the player.
    Player(Executor& main, std::shared_ptr<const HostClock> clock, std::unique_ptr<AudioSink> sink, Options options);
    ~Player();

    /// Stops and shows the item's beginning. None is fine.
    void replaceCurrentItem(std::shared_ptr<PlayerItem> item);
    const std::shared_ptr<PlayerItem>& currentItem() const { return m_item; }

    /// Goes to exactly that time; play goes on from there. `done` hears whether its frame came to be shown: false when
    /// another seek or item came first.
    void seek(MediaTime time, std::function<void(bool)> done = {});
    /// 0 pauses, a negative rate plays backwards.
    void setRate(double rate);
    void pause() { setRate(0); }
    double rate() const { return m_rate; }
    TimeControlStatus timeControlStatus() const {
        if (m_rate == 0)
            return TimeControlStatus::paused;
        return m_isHeld ? TimeControlStatus::waiting : TimeControlStatus::playing;
    }
    MediaTime currentTime() const;

    /// Calls at every interval while it plays, and once after it stopped or went elsewhere. As long as the answer
    /// lives, or the player.
    [[nodiscard]] Timer addPeriodicTimeObserver(Duration interval, std::function<void(MediaTime)> observer);

    /// The frame to show at `hostTime` if it is another one than was taken last; 4:2:0. Asked at every refresh of a
    /// screen. Frames that nobody takes while they are due count as dropped.
    PixelBuffer takePicture(MediaTime hostTime);
    /// Called when a picture can be taken while the player stands still.
    void setPictureObserver(std::function<void()> observer) { m_pictureArrived = std::move(observer); }
    std::int64_t droppedFrameCount() const { return m_frames ? m_frames->droppedCount() : 0; }
    /// By how much the clock of pictures is behind what was heard last, in seconds; nothing while nothing is heard.
    std::optional<double> driftFromSound() const;

private:
    struct Observer;
    /// What callbacks hold on to; there is another one for each item.
    struct Life {};

    double durationSeconds() const;
    double secondsAt(MediaTime hostTime) const;
    std::int64_t indexAt(double seconds) const;
    int direction() const { return m_rate > 0 ? 1 : m_rate < 0 ? -1 : 0; }
    /// With frames that were made, when these are still the ones that are wanted.
    enum class Frames { kept, made };
    void goFrom(double seconds, Frames frames);
    void tick();
    std::optional<PlayerSound::Heard> lastHeard(MediaTime now) const;
    void followSound(MediaTime now);
    void stopAt(double seconds);
    void framesArrived();
    void fail(const Error& error);
    void finishSeek(bool hasArrived);
    void tellObservers();
    /// Has work run on main, from any thread, as long as the player lives and plays the item that it plays now.
    std::function<void(Work)> mainPoster() const;

    Executor& m_main;
    const std::shared_ptr<const HostClock> m_hostClock;
    const std::shared_ptr<PictureCache> m_cache;
    std::unique_ptr<AudioSink> m_sink;
    std::shared_ptr<Life> m_life = std::make_shared<Life>();

    std::shared_ptr<PlayerItem> m_item;
    /// What was asked for; the clock's rate is 0 while it waits for the first picture and sound.
    double m_rate = 0;
    PlaybackClock m_clock;
    bool m_isHeld = false;
    MediaTime m_heldSince;
    std::function<void(bool)> m_seekDone;
    /// The frame that a seek waits for.
    std::optional<std::int64_t> m_soughtFrame;
    std::function<void()> m_pictureArrived;
    std::vector<std::weak_ptr<Observer>> m_observers;
    Timer m_ticking;

    std::unique_ptr<PlayerSound> m_sound;
    std::unique_ptr<PlayerFrames> m_frames;
};

} // namespace keldra
