#include "PlayRun.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace keldra::play {
namespace {

using namespace std::chrono_literals;

constexpr Duration refreshPeriod = Duration(1s) / 60;

double quantile(std::vector<double> values, double share) {
    if (values.empty())
        return 0;
    const auto at = values.begin() + std::ptrdiff_t(share * double(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

} // namespace

PlayRun::PlayRun(Executor& main, std::shared_ptr<const HostClock> clock, std::unique_ptr<AudioSink> sink,
                 std::shared_ptr<PlayerItem> item, PictureWindow* window, PlayOptions options)
    : m_main(main)
    , m_clock(clock)
    , m_window(window)
    , m_options(options)
    , m_item(std::move(item))
    , m_player(main, clock, std::move(sink), {}) {}

void PlayRun::start(std::function<void(bool)> ended) {
    m_ended = std::move(ended);
    m_item->setStatusObserver([this] {
        if (m_item->status() == PlayerItem::Status::readyToPlay && !std::exchange(m_hasBegun, true))
            begin();
        if (m_item->status() == PlayerItem::Status::failed) {
            std::fprintf(stderr, "keldra_play: %s\n", m_item->error()->message.c_str());
            end(false);
        }
    });
    m_item->setFailureObserver([this](const Error& error) {
        std::fprintf(stderr, "keldra_play: %s\n", error.message.c_str());
        end(false);
    });
    m_player.replaceCurrentItem(m_item);
    m_refreshing = m_main.every(refreshPeriod, [this] { refresh(); });
}

void PlayRun::begin() {
    if (m_options.seekCount > 0)
        return seekNext();
    const double duration = m_item->composition()->duration().seconds();
    const double from = m_options.from.value_or(m_options.rate < 0 ? duration : 0);
    m_player.seek(MediaTime::fromSeconds(from, 600), [this](bool) {
        m_droppedBefore = m_player.droppedFrameCount();
        m_startedAt = m_clock->now();
        m_player.setRate(m_options.rate);
        m_telling = m_main.every(1s, [this] { tellSecond(); });
    });
}

void PlayRun::refresh() {
    const MediaTime now = m_clock->now();
    if (const PixelBuffer picture = m_player.takePicture(now)) {
        m_shownCount += m_movingSince ? 1 : 0;
        if (m_window != nullptr)
            m_window->show(picture);
    }
    if (!m_telling)
        return;
    if (!m_movingSince && m_player.timeControlStatus() == Player::TimeControlStatus::playing)
        m_movingSince = now;
    if (const auto drift = m_player.driftFromSound())
        m_drifts.push_back(*drift * 1000);
    const bool isOver = m_options.seconds && (now - m_startedAt).seconds() >= *m_options.seconds;
    const bool isAtEnd = m_player.rate() == 0 || (m_player.rate() < 0 && m_player.currentTime() <= MediaTime::zero());
    if (isOver || isAtEnd)
        finishPlay();
}

void PlayRun::tellSecond() {
    const auto drift = m_player.driftFromSound();
    std::printf("%7.3f s  drift %s ms  dropped %lld\n", m_player.currentTime().seconds(),
                drift ? std::to_string(*drift * 1000).c_str() : "-",
                static_cast<long long>(m_player.droppedFrameCount() - m_droppedBefore));
    std::fflush(stdout);
}

void PlayRun::finishPlay() {
    const MediaTime now = m_clock->now();
    const double waited = m_movingSince ? (*m_movingSince - m_startedAt).seconds() : 0;
    std::vector<double> distances;
    for (const double drift : m_drifts)
        distances.push_back(std::abs(drift));
    std::printf("{\"rate\":%g,\"seconds\":%.3f,\"position\":%.3f,\"waited_ms\":%.1f,\"shown\":%lld,\"dropped\":%lld,"
                "\"heard\":%s,\"drift_ms\":{\"median\":%.3f,\"p95\":%.3f,\"worst\":%.3f}}\n",
                m_options.rate, (now - m_startedAt).seconds(), m_player.currentTime().seconds(), waited * 1000,
                static_cast<long long>(m_shownCount),
                static_cast<long long>(m_player.droppedFrameCount() - m_droppedBefore),
                m_drifts.empty() ? "false" : "true", quantile(distances, 0.5), quantile(distances, 0.95),
                quantile(distances, 1));
    end(true);
}

void PlayRun::seekNext() {
    if (int(m_seekTimes.size()) == m_options.seekCount)
        return finishSeeks();
    const double duration = m_item->composition()->duration().seconds();
    const double target = std::uniform_real_distribution<>(0, duration)(m_random);
    m_startedAt = m_clock->now();
    m_player.seek(MediaTime::fromSeconds(target, 60000), [this](bool hasArrived) {
        if (!hasArrived)
            return end(false);
        m_seekTimes.push_back((m_clock->now() - m_startedAt).seconds() * 1000);
        seekNext();
    });
}

void PlayRun::finishSeeks() {
    std::printf("{\"seeks\":%zu,\"median_ms\":%.1f,\"p95_ms\":%.1f,\"worst_ms\":%.1f}\n", m_seekTimes.size(),
                quantile(m_seekTimes, 0.5), quantile(m_seekTimes, 0.95), quantile(m_seekTimes, 1));
    end(true);
}

void PlayRun::end(bool isWell) {
    std::fflush(stdout);
    m_telling.cancel();
    m_refreshing.cancel();
    if (const auto ended = std::exchange(m_ended, nullptr))
        m_main.post([ended, isWell] { ended(isWell); });
}

} // namespace keldra::play
