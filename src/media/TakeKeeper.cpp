#include "media/TakeKeeper.h"

#include "base/Log.h"
#include "media/DiskSpace.h"

namespace keldra {

TakeKeeper::TakeKeeper(const OutputFile& file, Listener listener) : m_file(file), m_listener(std::move(listener)) {}

void TakeKeeper::look(bool hasNewData) {
    if (hasNewData)
        m_hasNewData = true;
    if (!m_isOver && !m_isAskedFor.exchange(true))
        m_queue.post([this] { round(); });
}

Result<void> TakeKeeper::finish() {
    m_isOver = true;
    m_queue.sync([] {});
    return m_outcome;
}

void TakeKeeper::round() {
    m_isAskedFor = false;
    if (m_isOver || !m_outcome)
        return;
    m_outcome = check();
    if (!m_outcome) {
        if (m_listener.failed)
            m_listener.failed(m_outcome.error());
        return;
    }
    const auto room = m_file.freeBytes();
    if (room && *room < diskSpace::keptWhileRecording && !std::exchange(m_hasToldOfRoom, true) &&
        m_listener.diskNearlyFull)
        m_listener.diskNearlyFull();
}

Result<void> TakeKeeper::check() {
    TRY(m_file.checkName());
    if (!m_hasNewData.exchange(false))
        return {};
    TRY(m_file.syncData());
    // Once, so that the folder too remembers the file.
    if (!std::exchange(m_hasSyncedFolder, true))
        if (const auto synced = m_file.syncFolder(); !synced)
            logFailure("bringing the folder of a recording to the disk", synced.error());
    return {};
}

} // namespace keldra
