#include "platform/portal/PortalRequest.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <limits>

namespace keldra {
namespace {

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

/// Of the signal that answers.
enum Response : uint { accepted = 0, cancelled = 1 };

/// Where the portal will put the request, so that its signal cannot be missed.
QString pathOf(const QDBusConnection& bus, const QString& token) {
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    return portalPath + QStringLiteral("/request/%1/%2").arg(sender, token);
}

} // namespace

Error portalError(const QString& message) {
    return Error{"Portal", 1, message.toStdString(), {}};
}

void PortalRequest::send(const QDBusConnection& bus, const QString& interface, const QString& method,
                         const QVariantList& arguments, QVariantMap options, Completion<QVariantMap> done) {
    static int count = 0;
    const QString token = QStringLiteral("keldra%1").arg(++count);
    options[QStringLiteral("handle_token")] = token;
    auto* request = new PortalRequest(bus, std::move(done));
    request->listenAt(pathOf(bus, token));

    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, interface, method);
    call.setArguments(QVariantList(arguments) << options);
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call, std::numeric_limits<int>::max()), request);
    connect(pending, &QDBusPendingCallWatcher::finished, request, [request](QDBusPendingCallWatcher* answered) {
        const QDBusPendingReply<QDBusObjectPath> reply = *answered;
        if (reply.isError())
            request->finish(fail(portalError(reply.error().message())));
        else
            // Portals before 0.9 choose a path of their own.
            request->listenAt(reply.value().path());
    });
    auto* watcher = new QDBusServiceWatcher(portalService, bus, QDBusServiceWatcher::WatchForUnregistration, request);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, request,
            [request] { request->finish(fail(portalError(QStringLiteral("The desktop portal went away.")))); });
}

PortalRequest::PortalRequest(const QDBusConnection& bus, Completion<QVariantMap> done)
    : m_bus(bus), m_done(std::move(done)) {}

void PortalRequest::listenAt(const QString& path) {
    if (path == m_path)
        return;
    m_path = path;
    m_bus.connect(portalService, path, requestInterface, QStringLiteral("Response"), this,
                  SLOT(answered(uint, QVariantMap)));
}

void PortalRequest::answered(uint response, const QVariantMap& results) {
    if (response == accepted)
        finish(results);
    else if (response == cancelled)
        finish(fail(portalError(QStringLiteral("Screen recording access was not granted"))));
    else
        finish(fail(portalError(QStringLiteral("The desktop ended the request to record the screen."))));
}

void PortalRequest::finish(Result<QVariantMap> answer) {
    // The first answer counts.
    if (const auto done = std::exchange(m_done, nullptr)) {
        deleteLater();
        done(std::move(answer));
    }
}

} // namespace keldra
