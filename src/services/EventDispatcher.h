#pragma once

#include "services/AnalyticsEvent.h"
#include "services/ConcurrentQueue.h"
#include "services/HttpSession.h"

#include <memory>

namespace keldra {

/// Keeps events in memory and sends them in batches.
///
/// Threads: enqueue and flush from any. Batches are taken and encoded on `queue`; the session is used on main. `queue`
///          must outlive this, and the session must outlive `queue`: a step under way there still holds this.
class EventDispatcher : public std::enable_shared_from_this<EventDispatcher> {
public:
    static constexpr std::size_t maximumBatchSize = 25;

    EventDispatcher(QUrl apiUrl, const QString& appKey, const ApplicationFacts& facts, HttpSession& session,
                    Executor& queue, Executor& mainQueue);

    void enqueue(AnalyticsEvent event) { m_events.append(std::move(event)); }

    /// Sends what is queued, batch after batch. What a server may take later (no answer, or a status from 500) is
    /// queued again when all have been tried; what it refuses is dropped. Flushes may overlap: each takes batches of
    /// its own. `done` runs on main, unless this object goes before.
    void flush(Work done);

private:
    struct Flush;

    void sendNext(std::shared_ptr<Flush> flush);
    void send(std::shared_ptr<Flush> flush, const QByteArray& body);
    HttpRequest request(const QByteArray& body) const;

    const QUrl m_apiUrl;
    const QList<HttpHeader> m_headers;
    HttpSession& m_session;
    Executor& m_queue;
    Executor& m_mainQueue;
    ConcurrentQueue<AnalyticsEvent> m_events;
};

} // namespace keldra
