#pragma once

#include "base/Result.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariant>

namespace keldra {

/// A question to the desktop portal, which answers by a signal whenever its user has decided. Deletes itself.
/// Main thread.
class PortalRequest final : public QObject {
    Q_OBJECT

public:
    /// Asks, and answers on main with what the portal gave. `arguments` without the options, which come last. Errors:
    /// the portal is not there or refuses, in the system's words; the user said no.
    static void send(const QDBusConnection& bus, const QString& interface, const QString& method,
                     const QVariantList& arguments, QVariantMap options, Completion<QVariantMap> done);

private:
    PortalRequest(const QDBusConnection& bus, Completion<QVariantMap> done);
    void listenAt(const QString& path);
    void finish(Result<QVariantMap> answer);
    Q_SLOT void answered(uint response, const QVariantMap& results);

    QDBusConnection m_bus;
    QString m_path;
    Completion<QVariantMap> m_done;
};

/// An error of the portal's, in its words.
Error portalError(const QString& message);

inline const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
inline const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
inline const QString screenCastInterface = QStringLiteral("org.freedesktop.portal.ScreenCast");

} // namespace keldra
