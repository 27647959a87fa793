#include "platform/qt/DBusSleepInhibitor.h"

#include "platform/qt/BusCall.h"

#include <QCoreApplication>
#include <QDBusUnixFileDescriptor>

#include <utility>
#include <vector>

namespace keldra {
namespace {

constexpr std::chrono::seconds patience{25};

/// Somebody who counts programs that want to stay awake by a number each.
struct CookieService {
    const char* name;
    const char* path;
    const char* interface;
};

constexpr CookieService cookieServices[] = {
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"},
    {"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
     "org.freedesktop.PowerManagement.Inhibit"},
};

QDBusMessage method(const CookieService& to, const char* name, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(QString::fromLatin1(to.name), QString::fromLatin1(to.path),
                                               QString::fromLatin1(to.interface), QString::fromLatin1(name));
    call.setArguments(arguments);
    return call;
}

/// What one hold has been given so far.
class Grants {
public:
    ~Grants() {
        for (const auto& [service, cookie] : m_cookies)
            QDBusConnection::sessionBus().send(method(*service, "UnInhibit", {cookie}));
    }
    void add(const CookieService& service, quint32 cookie) { m_cookies.emplace_back(&service, cookie); }
    void add(QDBusUnixFileDescriptor lock) { m_lock = std::move(lock); }

private:
    std::vector<std::pair<const CookieService*, quint32>> m_cookies;
    /// Held while it is open.
    QDBusUnixFileDescriptor m_lock;
};

void askCookie(const CookieService& service, const QString& reason, const std::shared_ptr<Grants>& grants) {
    const QVariantList arguments{QCoreApplication::applicationName(), reason};
    callBus(QDBusConnection::sessionBus(), method(service, "Inhibit", arguments), patience,
            [&service, weak = std::weak_ptr(grants)](const Result<QDBusMessage>& reply) {
                if (!reply || reply->signature() != u"u")
                    return;
                const quint32 cookie = reply->arguments().first().toUInt();
                if (const auto alive = weak.lock())
                    alive->add(service, cookie);
                else
                    QDBusConnection::sessionBus().send(method(service, "UnInhibit", {cookie}));
            });
}

void askLoginManager(const QString& reason, const std::shared_ptr<Grants>& grants) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    call.setArguments(
        {QStringLiteral("idle:sleep"), QCoreApplication::applicationName(), reason, QStringLiteral("block")});
    callBus(QDBusConnection::systemBus(), call, patience,
            [weak = std::weak_ptr(grants)](const Result<QDBusMessage>& reply) {
                const auto alive = weak.lock();
                // An answer that nobody waits for closes its lock itself.
                if (alive && reply && reply->signature() == u"h")
                    alive->add(reply->arguments().first().value<QDBusUnixFileDescriptor>());
            });
}

} // namespace

SleepInhibitor::Hold DBusSleepInhibitor::inhibit(const QString& reason) {
    auto grants = std::make_shared<Grants>();
    if (QDBusConnection::sessionBus().isConnected())
        for (const CookieService& service : cookieServices)
            askCookie(service, reason, grants);
    if (QDBusConnection::systemBus().isConnected())
        askLoginManager(reason, grants);
    return grants;
}

} // namespace keldra
