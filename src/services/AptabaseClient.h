#pragma once

#include "async/Scheduler.h"
#include "services/EventDispatcher.h"

#include <QUrl>

#include <functional>
#include <memory>

namespace keldra {

/// What the analytics client works with. All of it outlives the client; then `queue` goes, then `session`.
struct AnalyticsTools {
    HttpSession& session;
    /// Where batches are taken and encoded.
    Executor& queue;
    Executor& mainQueue;
    Scheduler& scheduler;
    std::function<QDateTime()> now;
    /// Uniform below the given bound.
    std::function<quint32(quint32 bound)> random;
};

/// Stamps events with session and environment, and has them sent every now and then. Main thread.
class AptabaseClient {
public:
    AptabaseClient(const AnalyticsTools& tools, QUrl apiUrl, const QString& appKey, const EnvironmentInfo& environment,
                   Duration flushInterval);

    /// Queues the event. An hour of silence begins a new session.
    void track(const QString& eventName, QJsonObject properties);

    /// Sends what is queued, now and then at every interval.
    void startPolling();
    /// Ends that, and sends once more what is queued.
    void stopPolling();
    /// Sends what is queued; the timer starts no flush meanwhile. `done` runs on main, unless this object goes before.
    void flush(Work done);

private:
    QString newSessionId() const;

    AnalyticsTools m_tools;
    QJsonObject m_systemProps;
    Duration m_flushInterval;
    QString m_sessionId;
    QDateTime m_lastTouched;
    std::shared_ptr<EventDispatcher> m_dispatcher;
    std::shared_ptr<bool> m_pausesFlushTimer = std::make_shared<bool>(false);
    Timer m_flushTimer;
};

} // namespace keldra
