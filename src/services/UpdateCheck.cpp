#include "services/UpdateCheck.h"

#include "async/AwaitCompletion.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <charconv>
#include <vector>

namespace keldra {
namespace {

std::vector<long long> versionNumbers(const QString& version) {
    std::vector<long long> numbers;
    for (const QByteArray& piece : version.toUtf8().split('.')) {
        long long number = 0;
        const char* const end = piece.cend();
        const auto [rest, error] = std::from_chars(piece.cbegin(), end, number);
        if (error == std::errc() && rest == end)
            numbers.push_back(number);
    }
    return numbers;
}

bool isWebPage(const QUrl& url) {
    return (url.scheme() == u"https" || url.scheme() == u"http") && !url.host().isEmpty();
}

/// How many addresses are asked when each leads to the next.
constexpr int mostVisits = 5;

bool mayFollow(const QUrl& from, const QUrl& to) {
    return isWebPage(to) && (to.scheme() == u"https" || from.scheme() == u"http");
}

} // namespace

std::optional<UpdateManifest> decodeUpdateManifest(const QByteArray& json) {
    const QJsonObject manifest = QJsonDocument::fromJson(json).object();
    const QJsonValue version = manifest["version"];
    const QUrl downloadURL(manifest["downloadURL"].toString(), QUrl::StrictMode);
    if (!version.isString() || !isWebPage(downloadURL))
        return std::nullopt;
    return UpdateManifest{version.toString(), downloadURL};
}

bool isVersionNewer(const QString& remote, const QString& local) {
    auto remoteNumbers = versionNumbers(remote);
    auto localNumbers = versionNumbers(local);
    const auto length = std::max(remoteNumbers.size(), localNumbers.size());
    remoteNumbers.resize(length);
    localNumbers.resize(length);
    return remoteNumbers > localNumbers;
}

QCoro::Task<std::optional<UpdateManifest>> fetchAvailableUpdate(HttpSession& session, QString host,
                                                                QString localVersion) {
    const auto url = serviceUrl(host, QStringLiteral("/apps/keldra/version.json"));
    if (!url)
        co_return std::nullopt;
    HttpRequest request;
    request.url = *url;
    request.headers = {{"User-Agent", "KELDRA"}};
    HttpResponse answer;
    for (int visits = 0; visits < mostVisits; ++visits) {
        const auto told = co_await awaitCompletion<HttpResponse>(
            [&](Completion<HttpResponse> done) { session.send(request, std::move(done)); });
        answer = told.value_or(HttpResponse());
        if (!mayFollow(request.url, answer.redirect))
            break;
        request.url = answer.redirect;
    }
    if (answer.status != 200)
        co_return std::nullopt;
    auto manifest = decodeUpdateManifest(answer.body);
    if (!manifest || localVersion.isEmpty() || !isVersionNewer(manifest->version, localVersion))
        co_return std::nullopt;
    co_return manifest;
}

} // namespace keldra
