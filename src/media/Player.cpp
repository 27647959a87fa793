#include "media/Player.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace keldra {
namespace {

using namespace std::chrono_literals;

constexpr Duration tickPeriod = 10ms;
/// Seconds that play waits for its first picture and sound before it begins without them.
constexpr double longestHold = 0.5;
/// What a screen shows; faster play leaves frames out from the start.
constexpr double mostFramesPerSecond = 60;

} // namespace

struct Player::Observer {
    std::function<void(MediaTime)> call;
    Duration interval;
    std::optional<MediaTime> lastCall;
};

Player::Player(Executor& main, std::shared_ptr<const HostClock> clock, std::unique_ptr<AudioSink> sink, Options options)
    : m_main(main)
    , m_hostClock(std::move(clock))
    , m_cache(std::make_shared<PictureCache>(options.cacheBytes))
    , m_sink(std::move(sink)) {}

Player::~Player() {
    replaceCurrentItem(nullptr);
}

std::function<void(Work)> Player::mainPoster() const {
    return [&main = m_main, life = std::weak_ptr(m_life)](Work work) {
        main.post([life, work = std::move(work)] {
            if (!life.expired())
                work();
        });
    };
}

void Player::replaceCurrentItem(std::shared_ptr<PlayerItem> item) {
    setRate(0);
    finishSeek(false);
    if (m_item) {
        m_item->m_videoChanged = nullptr;
        m_item->m_mixChanged = nullptr;
    }
    // Everything of the item before is over with, whatever it still had to tell.
    m_life = std::make_shared<Life>();
    m_frames.reset();
    m_sound.reset();
    m_item = std::move(item);
    m_clock = {};
    if (!m_item)
        return;

    const auto post = mainPoster();
    const auto failed = [this, post](Error error) { post([this, error = std::move(error)] { fail(error); }); };
    if (m_sink)
        m_sound =
            std::make_unique<PlayerSound>(m_item->composition(), m_item->audioMix(), *m_sink, m_hostClock, failed);
    m_item->m_mixChanged = [this] {
        if (m_sound)
            m_sound->setMix(m_item->audioMix());
    };
    if (!m_item->videoComposition()) {
        post([this] { m_item->setStatus(PlayerItem::Status::readyToPlay, std::nullopt); });
        return;
    }
    m_frames = std::make_unique<PlayerFrames>(
        m_item->composition(), *m_item->videoComposition(), m_cache,
        PlayerFrames::Events{[this, post] { post([this] { framesArrived(); }); }, failed});
    m_item->m_videoChanged = [this] {
        if (!m_frames || !m_item->videoComposition())
            return;
        m_frames->setVideoComposition(*m_item->videoComposition());
        // Frames that play are soon used up; one that stands is made anew.
        if (m_rate == 0)
            m_frames->aim(indexAt(m_clock.anchorSeconds), 0);
    };
    m_frames->aim(0, 0);
}

double Player::durationSeconds() const {
    return m_item ? m_item->composition()->duration().seconds() : 0;
}

double Player::secondsAt(MediaTime hostTime) const {
    return std::clamp(m_clock.secondsAt(hostTime), 0.0, durationSeconds());
}

std::int64_t Player::indexAt(double seconds) const {
    return std::clamp<std::int64_t>(m_frames->indexAt(seconds), 0,
                                    std::max<std::int64_t>(m_frames->frameCount() - 1, 0));
}

MediaTime Player::currentTime() const {
    return MediaTime::fromSeconds(secondsAt(m_hostClock->now()), HostClock::timescale);
}

void Player::seek(MediaTime time, std::function<void(bool)> done) {
    finishSeek(false);
    m_seekDone = std::move(done);
    const double seconds = std::clamp(time.seconds(), 0.0, durationSeconds());
    goFrom(seconds, Frames::made);
    if (m_frames)
        m_soughtFrame = indexAt(seconds);
    else
        finishSeek(true);
}

void Player::setRate(double rate) {
    if (rate == m_rate)
        return;
    const double seconds = secondsAt(m_hostClock->now());
    const bool isSameDirection = rate * m_rate > 0;
    m_rate = rate;
    if (rate == 0)
        return stopAt(seconds);
    goFrom(seconds, isSameDirection ? Frames::kept : Frames::made);
    if (!m_ticking)
        m_ticking = m_main.every(tickPeriod, [this] { tick(); });
}

/// Shows the frame there and, when it is to play, holds still until it can.
void Player::goFrom(double seconds, Frames frames) {
    m_heldSince = m_hostClock->now();
    m_clock = {m_heldSince, seconds, 0};
    if (m_frames) {
        const double wanted = m_frames->framesPerSecond() * std::abs(m_rate);
        m_frames->setStep(std::max(1, int(wanted / mostFramesPerSecond + 0.01)));
    }
    if (m_frames && frames == Frames::made)
        m_frames->aim(indexAt(seconds), direction());
    const bool sounds = m_sound && m_sound->hasSound() && m_rate > 0;
    if (sounds)
        m_sound->start(seconds, m_rate);
    else if (m_sound)
        m_sound->stop();
    m_isHeld = m_rate != 0;
    if (m_rate == 0)
        mainPoster()([this] { tellObservers(); });
}

void Player::tick() {
    if (m_rate == 0)
        return;
    const MediaTime now = m_hostClock->now();
    if (m_isHeld) {
        const bool sounds = m_sound && m_sound->hasSound() && m_sink->hasDevice() && m_rate > 0;
        const bool isReady =
            sounds ? m_sound->heard().has_value() : !m_frames || m_frames->isReadyFrom(indexAt(m_clock.anchorSeconds));
        if (!isReady && (now - m_heldSince).seconds() < longestHold)
            return;
        m_isHeld = false;
        m_clock = {now, m_clock.anchorSeconds, m_rate};
    }
    followSound(now);
    const double seconds = m_clock.secondsAt(now);
    if (m_rate > 0 && seconds >= durationSeconds())
        return stopAt(durationSeconds());
    if (m_rate < 0 && seconds < 0)
        m_clock = {now, 0, m_rate};
    for (const auto& weak : m_observers)
        if (const auto observer = weak.lock()) {
            const double since = observer->lastCall ? (now - *observer->lastCall).seconds() : 1e9;
            // A tick that comes a little early is the one that is meant.
            if (since + std::chrono::duration<double>(tickPeriod).count() / 2 <
                std::chrono::duration<double>(observer->interval).count())
                continue;
            observer->lastCall = now;
            observer->call(currentTime());
        }
}

std::optional<PlayerSound::Heard> Player::lastHeard(MediaTime now) const {
    const auto heard = m_sound ? m_sound->heard() : std::nullopt;
    // A word from long ago says nothing: the device has gone.
    return heard && (now - heard->hostTime).seconds() < longestHold ? heard : std::nullopt;
}

void Player::followSound(MediaTime now) {
    if (!m_sound || m_rate <= 0)
        return;
    if (const auto heard = lastHeard(now))
        m_clock = {heard->hostTime, heard->seconds, m_rate};
}

void Player::stopAt(double seconds) {
    m_rate = 0;
    m_isHeld = false;
    m_ticking.cancel();
    if (m_sound)
        m_sound->stop();
    m_clock = {m_hostClock->now(), seconds, 0};
    // What was made ahead is not shown any more; the frame that is due at the stop may not have been.
    if (m_frames && !m_soughtFrame)
        m_frames->aim(indexAt(seconds), 0);
    mainPoster()([this] { tellObservers(); });
}

void Player::framesArrived() {
    if (m_item)
        m_item->setStatus(PlayerItem::Status::readyToPlay, std::nullopt);
    if (m_soughtFrame && m_frames->hasMade(*m_soughtFrame))
        finishSeek(true);
    if (m_rate == 0 && m_pictureArrived)
        m_pictureArrived();
}

void Player::fail(const Error& error) {
    if (!m_item)
        return;
    finishSeek(false);
    if (m_rate != 0)
        stopAt(secondsAt(m_hostClock->now()));
    if (m_item->status() == PlayerItem::Status::unknown)
        m_item->setStatus(PlayerItem::Status::failed, error);
    else if (m_item->m_failedToPlayToEnd)
        m_item->m_failedToPlayToEnd(error);
}

void Player::finishSeek(bool hasArrived) {
    m_soughtFrame.reset();
    if (const auto done = std::exchange(m_seekDone, nullptr))
        m_main.post([done, hasArrived] { done(hasArrived); });
}

Timer Player::addPeriodicTimeObserver(Duration interval, std::function<void(MediaTime)> observer) {
    auto added = std::make_shared<Observer>(Observer{std::move(observer), interval, std::nullopt});
    std::erase_if(m_observers, [](const auto& weak) { return weak.expired(); });
    m_observers.push_back(added);
    return Timer([added]() mutable { added.reset(); });
}

void Player::tellObservers() {
    const MediaTime time = currentTime();
    const auto observers = m_observers;
    for (const auto& weak : observers)
        if (const auto observer = weak.lock())
            observer->call(time);
}

PixelBuffer Player::takePicture(MediaTime hostTime) {
    if (!m_frames)
        return {};
    return m_frames->take(indexAt(secondsAt(hostTime)));
}

std::optional<double> Player::driftFromSound() const {
    const auto heard = lastHeard(m_hostClock->now());
    if (!heard || m_isHeld || m_rate <= 0)
        return std::nullopt;
    return heard->seconds - m_clock.secondsAt(heard->hostTime);
}

} // namespace keldra
