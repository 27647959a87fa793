#include "platform/portal/PortalPermissions.h"

#include "platform/portal/PortalRequest.h"
#include "platform/qt/BusCall.h"

#include <QDBusVariant>

namespace keldra {

void PortalPermissions::requestScreenCapture(Completion<bool> done) {
    // A portal that is not running yet is started by this call.
    constexpr std::chrono::seconds patience{10};
    auto call = QDBusMessage::createMethodCall(
        portalService, portalPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setArguments({screenCastInterface, QStringLiteral("AvailableSourceTypes")});
    callBus(m_bus, call, patience, [canCast = m_canCast, done = std::move(done)](const Result<QDBusMessage>& reply) {
        *canCast = reply && reply->arguments().value(0).value<QDBusVariant>().variant().toUInt() != 0;
        done(*canCast);
    });
}

} // namespace keldra
