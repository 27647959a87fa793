#include "services/HttpSession.h"

namespace keldra {

std::optional<QUrl> serviceUrl(const QString& host, const QString& path) {
    const QString base = host.endsWith(u'/') ? host.chopped(1) : host;
    const QUrl url(base + path, QUrl::StrictMode);
    const bool isWeb = url.scheme() == u"https" || url.scheme() == u"http";
    // A query or fragment in the host would swallow the path.
    if (!isWeb || url.host().isEmpty() || !url.path().endsWith(path))
        return std::nullopt;
    return url;
}

} // namespace keldra
