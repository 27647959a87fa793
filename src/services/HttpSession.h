#pragma once

#include "base/Executor.h"
#include "base/Result.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <optional>

namespace keldra {

struct HttpHeader {
    QByteArray name;
    QByteArray value;
    friend bool operator==(const HttpHeader&, const HttpHeader&) = default;
};

struct HttpRequest {
    QUrl url;
    QList<HttpHeader> headers;
    /// A POST of these bytes; without them, a GET.
    std::optional<QByteArray> body;
    /// How long the whole exchange may take.
    Duration timeout = std::chrono::seconds(60);
    /// What an answer has beyond this is cut off, unread.
    qsizetype longestAnswer = 64 * 1024;
};

struct HttpResponse {
    /// Absent where no HTTP server answered.
    std::optional<int> status;
    QByteArray body;
    /// Where a redirect leads, absolute; empty for every other answer.
    QUrl redirect;
};

/// Sends requests to web servers. Redirects are answers; nobody follows them here.
///
/// Threads: main; completions run on main.
/// Errors:  whatever keeps an answer from arriving whole and in time: no network, a broken connection, the timeout. A
///          status that tells of a failure is an answer.
class HttpSession {
public:
    virtual ~HttpSession() = default;
    virtual void send(HttpRequest request, Completion<HttpResponse> done) = 0;
};

/// The URL of a path on a host such as "https://example.org"; nothing for an empty host, or one that no web server can
/// have.
std::optional<QUrl> serviceUrl(const QString& host, const QString& path);

} // namespace keldra
