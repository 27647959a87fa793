#pragma once

#include "base/HostClock.h"
#include "base/Result.h"
#include "base/SerialQueue.h"
#include "imaging/PixelBufferPool.h"
#include "media/BackwardReader.h"
#include "media/CompositionReader.h"
#include "media/FrameCompositor.h"
#include "media/PictureCache.h"
#include "media/VideoComposition.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace keldra {

/// Makes the frames that a player shows, a few ahead of time, in either direction.
///
/// Frames are counted: number n stands from n frame durations on. Reading runs on a queue of its own, composing on the
/// compositor's; what is late is left out.
/// Threads: any, for what is public.
class PlayerFrames {
public:
    /// What it tells, on its own queues.
    struct Events {
        std::function<void()> arrived;
        std::function<void(Error)> failed;
    };

    PlayerFrames(std::shared_ptr<const Composition> composition, VideoComposition videoComposition,
                 std::shared_ptr<PictureCache> cache, Events events);
    ~PlayerFrames();
    PlayerFrames(const PlayerFrames&) = delete;
    PlayerFrames& operator=(const PlayerFrames&) = delete;

    /// Wanted from now on: frame `index` and those after it (direction 1) or before it (-1), or it alone (0). What was
    /// made before is forgotten, and none of it is told any more.
    void aim(std::int64_t index, int direction);
    /// Makes every `step`-th frame only, from the next one on; 1 at first.
    void setStep(int step);
    /// How frames are composed from now on; the compositor stays. Frames that are ready stay too.
    void setVideoComposition(VideoComposition videoComposition);

    /// Whether that frame was made since the last aim, taken or not.
    bool hasMade(std::int64_t index) const;
    /// Whether enough is made for play to begin at that frame. Forwards that is the frame itself. Backwards it is as
    /// many as are ever made ahead: the ones before them may need a run from a key frame far back.
    bool isReadyFrom(std::int64_t index) const;
    /// The newest frame that is due when `due` is on screen; those before it are dropped. No picture when there is
    /// none.
    PixelBuffer take(std::int64_t due);
    /// Frames that were due and never taken; those between two steps were not due.
    std::int64_t droppedCount() const;

    /// The number of the frame at that time.
    std::int64_t indexAt(double seconds) const;
    std::int64_t frameCount() const;
    double framesPerSecond() const;

private:
    struct Look {
        VideoComposition video;
        std::shared_ptr<PixelBufferPool> pool;
    };
    struct Ready {
        std::int64_t index = 0;
        PixelBuffer picture;
    };
    /// One frame to make.
    struct Order {
        std::int64_t index = 0;
        std::uint64_t aimNumber = 0;
        int direction = 0;
        std::shared_ptr<const Look> look;
    };

    std::shared_ptr<const Look> makeLook(VideoComposition video) const;
    void wakeUp();
    void work();
    std::optional<Order> nextOrder();
    [[nodiscard]] Result<void> make(const Order& order);
    void deliver(const Order& order, PixelBuffer picture);
    void report(std::uint64_t aimNumber, Error error);
    /// Decodes one more picture for the frames before this one. False when enough of them are there.
    [[nodiscard]] Result<bool> readBackwards(MediaTime time, const std::vector<std::int32_t>& trackIDs,
                                             BackwardReader::Want want);
    bool isAimed(std::uint64_t aimNumber) const;

    const std::shared_ptr<const Composition> m_composition;
    const std::shared_ptr<PictureCache> m_cache;
    const Events m_events;

    mutable std::mutex m_lock;
    std::shared_ptr<const Look> m_look;
    std::uint64_t m_aimNumber = 0;
    int m_direction = 0;
    int m_step = 1;
    /// The frame to make next; none when all are made.
    std::optional<std::int64_t> m_next;
    std::optional<std::int64_t> m_lastMade;
    std::int64_t m_firstAimed = 0;
    std::deque<Ready> m_ready;
    int m_underWay = 0;
    std::int64_t m_droppedCount = 0;
    bool m_isAwake = false;
    bool m_isStopping = false;

    // The reading queue's own.
    CompositionReader m_reader;
    std::map<PictureCache::TrackKey, std::unique_ptr<BackwardReader>> m_backward;

    std::unique_ptr<FrameCompositor> m_compositor;
    SerialQueue m_queue;
};

} // namespace keldra
