#include "platform/pipewire/DeviceClock.h"

#include <algorithm>
#include <cmath>

namespace keldra {
namespace {

/// How far off reports usually are (seconds, one sigma).
constexpr double jitter = 0.002;
/// What is known of a device's rate before it was heard (one sigma).
constexpr double unknownDrift = 300e-6;
/// How a crystal wanders: the drift's variance grows by this in a second.
constexpr double driftWander = 0.25e-12;
/// One report moves the estimate no more than if it were so far off.
constexpr double furthestTrusted = 3 * jitter;
/// Farther off than a busy machine makes a report; nearer, the difference is drift to be followed.
constexpr double doubtfulOff = 0.020;
/// A machine that was busy has caught up by then.
constexpr double patience = 0.150;
constexpr int fewestDoubts = 3;
/// How long the first reports are gathered, and how many at least.
constexpr double settlingSeconds = 0.25;
constexpr std::size_t fewestBeginnings = 5;
/// Where the graph runs at another rate than the device's sound, its count is rounded.
constexpr double roundingSeconds = 0.001;

} // namespace

DeviceClock::Verdict DeviceClock::hear(const Report& report) {
    const std::int64_t first = m_counted;
    const std::int64_t lostTicks = report.ticks - m_nextTicks;
    m_counted += report.frameCount;
    m_nextTicks = report.ticks + report.frameCount;
    if (!isSettled()) {
        m_beginnings.push_back(report.heardAt - double(first) / m_rate);
        if (double(m_counted) / m_rate < settlingSeconds || m_beginnings.size() < fewestBeginnings)
            return Verdict::doubtful;
        settle();
        return Verdict::steady;
    }

    const double off = report.heardAt - hostTimeOf(first);
    if (!m_isInDoubt && explains(lostTicks, off)) {
        m_time += double(lostTicks) / m_rate;
        follow(first, report.heardAt);
        return Verdict::jumped;
    }
    if (std::abs(off) < doubtfulOff) {
        m_isInDoubt = false;
        follow(first, report.heardAt);
        return Verdict::steady;
    }
    const bool isOtherWay = off * m_leastOff < 0;
    if (!m_isInDoubt || isOtherWay) {
        m_isInDoubt = true;
        m_doubtSince = report.heardAt;
        m_doubts = 0;
        m_leastOff = off;
    }
    ++m_doubts;
    if (std::abs(off) < std::abs(m_leastOff))
        m_leastOff = off;
    if (report.heardAt - m_doubtSince < patience || m_doubts < fewestDoubts)
        return Verdict::doubtful;
    m_isInDoubt = false;
    m_time += m_leastOff;
    follow(first, report.heardAt);
    return Verdict::jumped;
}

void DeviceClock::settle() {
    if (isSettled() || m_beginnings.empty())
        return;
    const auto middle = m_beginnings.begin() + std::ptrdiff_t(m_beginnings.size() / 2);
    std::nth_element(m_beginnings.begin(), middle, m_beginnings.end());
    m_frame = 0;
    m_time = *middle;
    m_timeVariance = jitter * jitter;
    m_driftVariance = unknownDrift * unknownDrift;
    m_beginnings.clear();
}

double DeviceClock::hostTimeOf(std::int64_t frame) const {
    return m_time + double(frame - m_frame) / m_rate * (1 + m_drift);
}

bool DeviceClock::explains(std::int64_t lostTicks, double off) const {
    // A graph that changes its driver counts from elsewhere; then time does not agree.
    const double lost = double(lostTicks) / m_rate;
    return lost > roundingSeconds && off > lost / 2 && std::abs(off - lost) < std::max(lost / 2, doubtfulOff);
}

void DeviceClock::follow(std::int64_t frame, double heardAt) {
    const double elapsed = double(frame - m_frame) / m_rate;
    m_time = hostTimeOf(frame);
    m_frame = frame;
    m_timeVariance += elapsed * (2 * m_covariance + elapsed * m_driftVariance);
    m_covariance += elapsed * m_driftVariance;
    m_driftVariance += elapsed * driftWander;

    const double off = std::clamp(heardAt - m_time, -furthestTrusted, furthestTrusted);
    const double whole = m_timeVariance + jitter * jitter;
    const double timeGain = m_timeVariance / whole;
    const double driftGain = m_covariance / whole;
    m_time += timeGain * off;
    m_drift += driftGain * off;
    m_driftVariance -= driftGain * m_covariance;
    m_covariance -= driftGain * m_timeVariance;
    m_timeVariance -= timeGain * m_timeVariance;
}

} // namespace keldra
