#pragma once

#include "services/HttpSession.h"

#include <QCoroTask>

#include <optional>

namespace keldra {

/// What the maker's web server says of the newest version.
struct UpdateManifest {
    QString version; ///< dotted decimal
    /// The web page where it is to be had.
    QUrl downloadURL;
    friend bool operator==(const UpdateManifest&, const UpdateManifest&) = default;
};

/// Nothing for anything but a JSON object with both members, the URL being a web page's.
std::optional<UpdateManifest> decodeUpdateManifest(const QByteArray& json);

/// Whether `remote` is the newer of two dotted versions: 1.10 is newer than 1.9, and 1.2.0 is 1.2. Pieces that are no
/// decimal number do not count.
bool isVersionNewer(const QString& remote, const QString& local);

/// Asks `host` once for the newest version. Nothing when it is not newer than `localVersion`, when either is not known,
/// when `host` is empty, and when anything fails, which is told to nobody. Redirects are followed
/// a few times, never to a less safe place. Main thread; the session lives until the answer.
QCoro::Task<std::optional<UpdateManifest>> fetchAvailableUpdate(HttpSession& session, QString host,
                                                                QString localVersion);

} // namespace keldra
