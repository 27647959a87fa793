#include "platform/qt/BusCall.h"

#include <QDBusPendingCallWatcher>

namespace keldra {

void callBus(const QDBusConnection& bus, const QDBusMessage& call, std::chrono::milliseconds patience,
             Completion<QDBusMessage> done) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, int(patience.count())));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        if (const QDBusError error = watcher->error(); error.isValid())
            done(fail(Error{
                "D-Bus", error.type(), (error.name() + QStringLiteral(": ") + error.message()).toStdString(), {}}));
        else
            done(watcher->reply());
    });
}

QDBusMessage busMethod(const QString& method, const QVariantList& arguments) {
    const QString name = QStringLiteral("org.freedesktop.DBus");
    auto call = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/DBus"), name, method);
    call.setArguments(arguments);
    return call;
}

} // namespace keldra
