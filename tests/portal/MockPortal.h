#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QVariantMap>

#include <cstdint>

namespace keldra::test {

/// A desktop portal whose user does what the test says. On a bus connection of its own.
class MockPortal final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.ScreenCast")

public:
    /// Gives that node of the session's PipeWire.
    explicit MockPortal(std::uint32_t node);
    ~MockPortal() override;

    /// The desktop's own switch for ending a recording.
    void endSession();

    /// 0 agrees, 1 says no.
    uint answer = 0;
    int dialogs = 0;
    int closedSessions = 0;
    QVariantMap sources;

public Q_SLOTS:
    QDBusObjectPath CreateSession(const QVariantMap& options);
    QDBusObjectPath SelectSources(const QDBusObjectPath& session, const QVariantMap& options);
    QDBusObjectPath Start(const QDBusObjectPath& session, const QString& parent, const QVariantMap& options);
    QDBusUnixFileDescriptor OpenPipeWireRemote(const QDBusObjectPath& session, const QVariantMap& options);

private:
    QDBusObjectPath respond(const QVariantMap& options, uint response, const QVariantMap& results);

    QDBusConnection m_bus;
    std::uint32_t m_node;
};

} // namespace keldra::test
