#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <functional>

namespace keldra::test {

/// A service of the desktop that a test plays, on a connection of its own to the test's bus.
class FakeService : public QDBusVirtualObject {
public:
    /// The arguments of the answer.
    using Reply = std::function<QVariantList(const QDBusMessage&)>;

    FakeService(const QString& name, const QString& path, Reply reply)
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name))
        , m_name(name)
        , m_reply(std::move(reply)) {
        m_bus.registerVirtualObject(path, this);
        m_bus.registerService(name);
    }
    ~FakeService() override { QDBusConnection::disconnectFromBus(m_name); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.append(message);
        return connection.send(message.createReply(m_reply(message)));
    }

    QList<QDBusMessage> calls;

private:
    QDBusConnection m_bus;
    QString m_name;
    Reply m_reply;
};

} // namespace keldra::test
