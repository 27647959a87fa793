#include "doubles/HttpServer.h"

#include <QTcpSocket>

#include <memory>

namespace keldra {

HttpServer::HttpServer() {
    m_server.listen(QHostAddress::LocalHost);
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection()) {
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QTcpSocket::readyRead, socket,
                             [this, socket, received = std::make_shared<QByteArray>()] { read(*socket, *received); });
        }
    });
}

HttpServer::Answer HttpServer::answer(int status, const QByteArray& body, const QByteArray& headers) {
    return {"HTTP/1.1 " + QByteArray::number(status) + " Word\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\n" + headers + "\r\n" + body};
}

QString HttpServer::host() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort());
}

void HttpServer::read(QTcpSocket& socket, QByteArray& received) {
    received += socket.readAll();
    const qsizetype headEnd = received.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return;
    Request request;
    QList<QByteArray> lines = received.left(headEnd).split('\n');
    request.line = lines.takeFirst().trimmed();
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        request.headers[line.left(colon).toLower()] = line.mid(colon + 2).chopped(line.endsWith('\r') ? 1 : 0);
    }
    const qsizetype length = request.headers.value("content-length").toLongLong();
    if (received.size() < headEnd + 4 + length)
        return;
    request.body = received.mid(headEnd + 4, length);
    received.clear();
    m_requests.append(std::move(request));

    const Answer answer = m_answers.size() > 1 ? m_answers.takeFirst() : m_answers.first();
    socket.write(answer.bytes);
    if (answer.hangsUp)
        socket.disconnectFromHost();
}

} // namespace keldra
