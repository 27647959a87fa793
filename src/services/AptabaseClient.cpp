#include "services/AptabaseClient.h"

namespace keldra {

AptabaseClient::AptabaseClient(const AnalyticsTools& tools, QUrl apiUrl, const QString& appKey,
                               const EnvironmentInfo& environment, Duration flushInterval)
    : m_tools(tools)
    , m_systemProps(systemProps(environment))
    , m_flushInterval(flushInterval)
    , m_sessionId(newSessionId())
    , m_lastTouched(tools.now())
    , m_dispatcher(std::make_shared<EventDispatcher>(std::move(apiUrl), appKey, environment.facts, tools.session,
                                                     tools.queue, tools.mainQueue)) {}

QString AptabaseClient::newSessionId() const {
    constexpr quint32 idsPerSecond = 100'000'000;
    const qint64 seconds = std::max<qint64>(0, m_tools.now().toSecsSinceEpoch());
    return QString::number(quint64(seconds) * idsPerSecond + m_tools.random(idsPerSecond));
}

void AptabaseClient::track(const QString& eventName, QJsonObject properties) {
    constexpr qint64 longestSilence = 3'600'000;
    const QDateTime now = m_tools.now();
    if (m_lastTouched.msecsTo(now) > longestSilence)
        m_sessionId = newSessionId();
    m_lastTouched = now;
    m_dispatcher->enqueue({now, m_sessionId, eventName, m_systemProps, std::move(properties)});
}

void AptabaseClient::startPolling() {
    stopPolling();
    m_flushTimer = m_tools.scheduler.every(m_flushInterval, [this] {
        if (!*m_pausesFlushTimer)
            m_dispatcher->flush([] {});
    });
}

void AptabaseClient::stopPolling() {
    m_flushTimer.cancel();
    m_dispatcher->flush([] {});
}

void AptabaseClient::flush(Work done) {
    *m_pausesFlushTimer = true;
    m_dispatcher->flush([pauses = m_pausesFlushTimer, done = std::move(done)] {
        *pauses = false;
        done();
    });
}

} // namespace keldra
