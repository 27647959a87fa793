#include "media/PlayerSound.h"

#include <chrono>

namespace keldra {
namespace {

using namespace std::chrono_literals;

constexpr Duration fillPeriod = 10ms;
constexpr std::int64_t framesAtOnce = 1024;
/// More than a sink takes; each costs two rounds, one to read it and one to hand it on.
constexpr int mostPiecesAtOnce = 64;
/// A device that says nothing for so many seconds is gone, or was.
constexpr double lostAfter = 0.3;

} // namespace

PlayerSound::PlayerSound(std::shared_ptr<const Composition> composition, std::optional<AudioMix> mix, AudioSink& sink,
                         std::shared_ptr<const HostClock> clock, std::function<void(Error)> failed)
    : m_sink(sink)
    , m_clock(std::move(clock))
    , m_failed(std::move(failed))
    , m_hasSound(false)
    , m_mix(std::move(composition), std::move(mix), {AudioSink::sampleRate, AudioSink::channelCount})
    , m_queue("KELDRA.Player.Sound") {
    m_hasSound = m_mix.hasSound();
}

PlayerSound::~PlayerSound() {
    m_filling.cancel();
    m_queue.sync([this] { m_sink.reset(); });
}

void PlayerSound::start(double seconds, double rate) {
    std::uint64_t number = 0;
    {
        const std::lock_guard guard(m_lock);
        number = ++m_runNumber;
        m_heard.reset();
    }
    m_queue.post([this, number, seconds, rate] { begin(number, seconds, rate); });
    if (!m_filling)
        m_filling = m_queue.every(fillPeriod, [this] { fill(); });
}

void PlayerSound::stop() {
    m_filling.cancel();
    {
        const std::lock_guard guard(m_lock);
        ++m_runNumber;
        m_heard.reset();
    }
    m_queue.post([this] {
        m_run.reset();
        m_sink.reset();
    });
}

void PlayerSound::setMix(std::optional<AudioMix> mix) {
    m_queue.post([this, mix = std::move(mix)]() mutable { m_mix.setMix(std::move(mix)); });
}

std::optional<PlayerSound::Heard> PlayerSound::heard() const {
    const std::lock_guard guard(m_lock);
    return m_heard;
}

void PlayerSound::begin(std::uint64_t number, double seconds, double rate) {
    m_sink.reset();
    m_waiting.clear();
    m_taken = 0;
    m_lastWord.reset();
    m_mix.seek(MediaTime::fromSeconds(seconds, AudioSink::sampleRate));
    m_run = Run{number, seconds, rate, nullptr, false};
    if (rate != 1) {
        auto stretch = SoundStretch::open(rate, AudioSink::sampleRate);
        if (!stretch) {
            m_run.reset();
            return m_failed(std::move(stretch.error()));
        }
        m_run->stretch = std::move(*stretch);
    }
    fill();
    m_sink.start();
}

void PlayerSound::fill() {
    if (!m_run)
        return;
    tellPosition();
    for (int piece = 0; piece < mostPiecesAtOnce; ++piece) {
        if (m_taken == m_waiting.size()) {
            if (m_run->isAtEnd)
                break;
            if (Result<void> read = readMore(); !read) {
                m_run.reset();
                return m_failed(std::move(read.error()));
            }
            continue;
        }
        const std::size_t count = (m_waiting.size() - m_taken) / AudioSink::channelCount;
        const std::size_t accepted = m_sink.write(m_waiting.data() + m_taken, count);
        m_taken += accepted * AudioSink::channelCount;
        if (accepted < count)
            break;
    }
}

Result<void> PlayerSound::readMore() {
    m_waiting.clear();
    m_taken = 0;
    TRY_LET(const AudioBuffer sound, m_mix.next(framesAtOnce));
    m_run->isAtEnd = !sound;
    const auto count = std::size_t(sound.frameCount());
    const float* samples = sound ? sound.samples<float>() : nullptr;
    if (m_run->stretch)
        return m_run->stretch->process(samples, count, m_waiting);
    if (sound)
        m_waiting.assign(samples, samples + count * AudioSink::channelCount);
    return {};
}

void PlayerSound::tellPosition() {
    const MediaTime now = m_clock->now();
    const auto position = m_sink.position();
    if (!position)
        return;
    if (m_lastWord && (now - *m_lastWord).seconds() > lostAfter)
        return goOnIfLost(now);
    m_lastWord = now;
    const double seconds = m_run->startSeconds + m_run->rate * position->frame / AudioSink::sampleRate;
    const std::lock_guard guard(m_lock);
    if (m_run->number == m_runNumber)
        m_heard = Heard{seconds, position->hostTime};
}

/// The device is back: picks up where the player has come to without it.
void PlayerSound::goOnIfLost(MediaTime now) {
    double seconds = 0;
    {
        const std::lock_guard guard(m_lock);
        if (!m_heard || m_run->number != m_runNumber)
            return;
        seconds = m_heard->seconds + m_run->rate * (now - m_heard->hostTime).seconds();
    }
    begin(m_run->number, seconds, m_run->rate);
}

} // namespace keldra
