#include "services/QtHttpSession.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace keldra {
namespace {

QNetworkRequest networkRequest(const HttpRequest& request) {
    QNetworkRequest result(request.url);
    // Without these Qt sends the user's languages, and unpacks what may be a bomb.
    result.setRawHeader("Accept-Language", "*");
    result.setRawHeader("Accept-Encoding", "identity");
    for (const HttpHeader& header : request.headers)
        result.setRawHeader(header.name, header.value);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute})
        result.setAttribute(attribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    return result;
}

/// One request until its answer; lives in its reply.
class Exchange final : public QObject {
public:
    Exchange(QNetworkReply* reply, qsizetype longestAnswer, Completion<HttpResponse> done)
        : QObject(reply), m_reply(reply), m_longestAnswer(longestAnswer), m_done(std::move(done)) {
        // Bounds what Qt reads ahead of us where the answer tells its length.
        reply->setReadBufferSize(longestAnswer + 1);
        connect(reply, &QNetworkReply::readyRead, this, [this] { read(); });
        connect(reply, &QNetworkReply::finished, this, [this] { finish(); });
    }

    void setDeadline(Timer deadline) { m_deadline = std::move(deadline); }

private:
    void read() {
        m_body += m_reply->read(m_longestAnswer + 1 - m_body.size());
        if (m_body.size() <= m_longestAnswer)
            return;
        m_body.truncate(m_longestAnswer);
        m_isCut = true;
        m_reply->abort();
    }

    void finish() {
        m_deadline.cancel();
        m_reply->deleteLater();
        if (!m_isCut && m_reply->isOpen())
            read();
        const auto done = std::exchange(m_done, nullptr);
        if (!done)
            return;
        const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (!isAnswered(status.isValid()))
            return done(fail(Error{"QNetworkReply", m_reply->error(), m_reply->errorString().toStdString(), {}}));
        HttpResponse response;
        if (status.isValid())
            response.status = status.toInt();
        response.body = std::move(m_body);
        const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
        if (!target.isEmpty())
            response.redirect = m_reply->url().resolved(target);
        done(std::move(response));
    }

    /// Qt calls many a status an error, with numbers above those of the network and of broken answers.
    bool isAnswered(bool hasStatus) const {
        const int error = m_reply->error();
        const bool isStatus =
            hasStatus && error > QNetworkReply::UnknownNetworkError && error != QNetworkReply::ProtocolFailure;
        return error == QNetworkReply::NoError || m_isCut || isStatus;
    }

    QNetworkReply* m_reply;
    qsizetype m_longestAnswer;
    Completion<HttpResponse> m_done;
    QByteArray m_body;
    bool m_isCut = false;
    Timer m_deadline;
};

} // namespace

QtHttpSession::QtHttpSession(Scheduler& scheduler) : m_scheduler(scheduler) {}

QtHttpSession::~QtHttpSession() = default;

void QtHttpSession::send(HttpRequest request, Completion<HttpResponse> done) {
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    const QNetworkRequest outgoing = networkRequest(request);
    QNetworkReply* reply = request.body ? m_network->post(outgoing, *request.body) : m_network->get(outgoing);
    auto* exchange = new Exchange(reply, request.longestAnswer, std::move(done));
    exchange->setDeadline(m_scheduler.after(request.timeout, [reply] { reply->abort(); }));
}

} // namespace keldra
