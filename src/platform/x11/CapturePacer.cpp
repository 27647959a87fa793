#include "platform/x11/CapturePacer.h"

#include <algorithm>

namespace keldra {

void CapturePacer::changed(TimePoint now) {
    if (!m_due)
        m_due = m_lastDue ? std::max(now, *m_lastDue + m_interval) : now;
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
