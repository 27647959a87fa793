#include "services/EventDispatcher.h"

#include "services/AnalyticsLog.h"

#include <QStringDecoder>

namespace keldra {
namespace {

/// Printable ASCII: a header can carry nothing else safely.
QByteArray headerText(const QString& text) {
    QByteArray plain;
    for (const QChar character : text)
        if (character >= u' ' && character <= u'~')
            plain += char(character.unicode());
    return plain;
}

QString utf8OrEmpty(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? QString() : text;
}

/// Why the batch must be sent again; nothing when it is done with, taken or refused.
std::optional<QString> reasonToRetry(const Result<HttpResponse>& answer, std::size_t count) {
    if (!answer)
        return QString::fromStdString(answer.error().message);
    const int status = answer->status.value_or(200);
    if (status < 300)
        return std::nullopt;
    constexpr qsizetype longestReason = 200;
    const QString text = QString::number(status) + u' ' + utf8OrEmpty(answer->body).left(longestReason);
    if (status >= 500)
        return text;
    logAnalytics(QStringLiteral("Aptabase: Failed to send %1 events because of %2. Will not retry.")
                     .arg(QString::number(count), text));
    return std::nullopt;
}

} // namespace

/// One pass over the queue. On the queue only, but for `batch`, which rests while its answer is awaited.
struct EventDispatcher::Flush {
    Work done;
    std::vector<AnalyticsEvent> batch;
    std::vector<AnalyticsEvent> failed;
};

EventDispatcher::EventDispatcher(QUrl apiUrl, const QString& appKey, const ApplicationFacts& facts,
                                 HttpSession& session, Executor& queue, Executor& mainQueue)
    : m_apiUrl(std::move(apiUrl))
    , m_headers{{"Content-Type", "application/json"},
                {"App-Key", headerText(appKey)},
                {"User-Agent", headerText(facts.osName + u'/' + facts.osVersion + u' ' + facts.locale)}}
    , m_session(session)
    , m_queue(queue)
    , m_mainQueue(mainQueue) {}

void EventDispatcher::flush(Work done) {
    auto flush = std::make_shared<Flush>();
    flush->done = std::move(done);
    m_queue.post([self = weak_from_this(), flush = std::move(flush)] {
        if (const auto alive = self.lock())
            alive->sendNext(flush);
    });
}

void EventDispatcher::sendNext(std::shared_ptr<Flush> flush) {
    flush->batch = m_events.take(maximumBatchSize);
    if (flush->batch.empty()) {
        m_events.append(std::move(flush->failed));
        m_mainQueue.post(std::move(flush->done));
        return;
    }
    m_mainQueue.post([self = weak_from_this(), flush, body = encodeBatch(flush->batch)] {
        if (const auto alive = self.lock())
            alive->send(flush, body);
    });
}

void EventDispatcher::send(std::shared_ptr<Flush> flush, const QByteArray& body) {
    m_session.send(request(body), [self = weak_from_this(), flush = std::move(flush)](Result<HttpResponse> answer) {
        const auto alive = self.lock();
        if (!alive)
            return;
        alive->m_queue.post([self, flush, answer = std::move(answer)] {
            const auto stillAlive = self.lock();
            if (!stillAlive)
                return;
            const std::size_t count = flush->batch.size();
            if (const auto reason = reasonToRetry(answer, count)) {
                logAnalytics(QStringLiteral("Aptabase: Failed to send %1 events. Reason: %2")
                                 .arg(QString::number(count), *reason));
                std::move(flush->batch.begin(), flush->batch.end(), std::back_inserter(flush->failed));
            }
            stillAlive->sendNext(flush);
        });
    });
}

HttpRequest EventDispatcher::request(const QByteArray& body) const {
    HttpRequest request;
    request.url = m_apiUrl;
    request.headers = m_headers;
    request.body = body;
    return request;
}

} // namespace keldra
