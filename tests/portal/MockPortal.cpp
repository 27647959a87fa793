#include "MockPortal.h"

#include "platform/portal/PortalRequest.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QFile>

#include <sys/socket.h>
#include <sys/un.h>

namespace keldra::test {

struct PortalStream {
    std::uint32_t node = 0;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalStream& stream) {
    argument.beginStructure();
    argument << stream.node << stream.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalStream& stream) {
    argument.beginStructure();
    argument >> stream.node >> stream.properties;
    argument.endStructure();
    return argument;
}

namespace {

const QString sessionPath = portalPath + QStringLiteral("/session/1/keldra");

/// Hears that the session was closed by its owner.
class MockSession final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Session")

public:
    explicit MockSession(int& closed, QObject* parent) : QObject(parent), m_closed(closed) {}

public Q_SLOTS:
    void Close() { ++m_closed; }

private:
    int& m_closed;
};

} // namespace

MockPortal::MockPortal(std::uint32_t node)
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"))), m_node(node) {
    qDBusRegisterMetaType<PortalStream>();
    qDBusRegisterMetaType<QList<PortalStream>>();
    m_bus.registerService(portalService);
    m_bus.registerObject(portalPath, this, QDBusConnection::ExportAllSlots);
    m_bus.registerObject(sessionPath, new MockSession(closedSessions, this), QDBusConnection::ExportAllSlots);
}

MockPortal::~MockPortal() {
    m_bus.unregisterService(portalService);
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
}

void MockPortal::endSession() {
    m_bus.send(QDBusMessage::createSignal(sessionPath, QStringLiteral("org.freedesktop.portal.Session"),
                                          QStringLiteral("Closed")));
}

QDBusObjectPath MockPortal::CreateSession(const QVariantMap& options) {
    return respond(options, 0, {{QStringLiteral("session_handle"), sessionPath}});
}

QDBusObjectPath MockPortal::SelectSources(const QDBusObjectPath&, const QVariantMap& options) {
    sources = options;
    return respond(options, 0, {});
}

QDBusObjectPath MockPortal::Start(const QDBusObjectPath&, const QString&, const QVariantMap& options) {
    ++dialogs;
    const QList<PortalStream> streams{{m_node, {}}};
    return respond(options, answer,
                   {{QStringLiteral("streams"), QVariant::fromValue(streams)},
                    {QStringLiteral("restore_token"), QStringLiteral("again")}});
}

QDBusUnixFileDescriptor MockPortal::OpenPipeWireRemote(const QDBusObjectPath&, const QVariantMap&) {
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/pipewire-0";
    std::copy_n(path.constData(), path.size(), address.sun_path);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        sendErrorReply(QDBusError::Failed, QStringLiteral("no PipeWire"));
    QDBusUnixFileDescriptor remote;
    remote.giveFileDescriptor(descriptor);
    return remote;
}

QDBusObjectPath MockPortal::respond(const QVariantMap& options, uint response, const QVariantMap& results) {
    const QString sender = message().service().mid(1).replace(u'.', u'_');
    const QString path =
        portalPath +
        QStringLiteral("/request/%1/%2").arg(sender, options.value(QStringLiteral("handle_token")).toString());
    QDBusMessage signal =
        QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
    signal.setArguments({response, results});
    m_bus.send(signal);
    return QDBusObjectPath(path);
}

} // namespace keldra::test

Q_DECLARE_METATYPE(keldra::test::PortalStream)

#include "MockPortal.moc"
