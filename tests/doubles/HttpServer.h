#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTcpServer>

class QTcpSocket;

namespace keldra {

/// A web server on the loopback that says what the test wrote down, byte for byte. Lives in the test's main loop.
class HttpServer {
public:
    struct Request {
        QByteArray line;                      ///< e.g. "GET / HTTP/1.1"
        QMap<QByteArray, QByteArray> headers; ///< by name in lower case
        QByteArray body;
    };
    struct Answer {
        QByteArray bytes;
        bool hangsUp = false;
    };

    HttpServer();

    /// An answer with its length; `headers` are whole lines with their ends.
    static Answer answer(int status, const QByteArray& body = {}, const QByteArray& headers = {});
    /// Takes the request and says nothing.
    static Answer silence() { return {}; }

    /// Gives these in turn, the last one for ever.
    void setAnswers(QList<Answer> answers) { m_answers = std::move(answers); }

    /// "http://127.0.0.1:" and the port.
    QString host() const;
    const QList<Request>& requests() const { return m_requests; }

private:
    void read(QTcpSocket& socket, QByteArray& received);

    QTcpServer m_server;
    QList<Answer> m_answers{answer(200)};
    QList<Request> m_requests;
};

} // namespace keldra
