#include "platform/x11/CapturePacer.h"

#include <algorithm>

namespace keldra {
namespace {

/// Saved time is spent in so many steps, each too small to be seen.
constexpr int stepsToSpend = 16;

} // namespace

void CapturePacer::changed(TimePoint now) {
    if (m_due)
        return;
    const TimePoint next = m_lastDue ? *m_lastDue + m_interval : now;
    if (now >= next) {
        m_saved = std::min(m_interval, m_saved + (now - next));
        m_due = now;
        return;
    }
    const Duration advance = std::min({m_saved, m_interval / stepsToSpend, Duration(next - now)});
    m_saved -= advance;
    m_due = next - advance;
}

void CapturePacer::taken(TimePoint now) {
    TimePoint due = m_due.value_or(now);
    // After a stall the grid goes on from its last point, not from where it was left.
    if (due + m_interval <= now)
        due += (now - due) / m_interval * m_interval;
    m_lastDue = due;
    m_due.reset();
}

} // namespace keldra
