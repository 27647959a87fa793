#include "platform/qt/AgentOnBus.h"

#include <QDBusMessage>

namespace keldra {

QString objectPathOf(const QString& busName) {
    return u'/' + QString(busName).replace(u'.', u'/');
}

AgentOnBus::AgentOnBus(QDBusConnection bus, QString name, ApplicationRequests requests)
    : m_bus(std::move(bus)), m_name(std::move(name)), m_requests(std::move(requests)) {
    m_bus.registerVirtualObject(objectPathOf(m_name), this);
}

AgentOnBus::~AgentOnBus() {
    m_bus.unregisterObject(objectPathOf(m_name));
}

QString AgentOnBus::introspect(const QString&) const {
    return QStringLiteral(R"(
  <interface name="%1">
    <method name="Activate"><arg name="platform_data" type="a{sv}" direction="in"/></method>
    <method name="Open">
      <arg name="uris" type="as" direction="in"/><arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg name="action_name" type="s" direction="in"/><arg name="parameter" type="av" direction="in"/>
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
  </interface>
  <interface name="%2">
    <method name="MakeWay"><arg name="ends" type="b" direction="out"/></method>
  </interface>
)")
        .arg(applicationInterface, m_name);
}

bool AgentOnBus::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const auto answered = answer(message);
    if (answered && message.isReplyRequired())
        connection.send(message.createReply(*answered));
    return answered.has_value();
}

std::optional<QVariantList> AgentOnBus::answer(const QDBusMessage& message) {
    const QString call = message.interface() + u'.' + message.member() + u' ' + message.signature();
    const QVariantList arguments = message.arguments();
    if (call == m_name + QStringLiteral(".MakeWay "))
        return QVariantList{m_requests.makeWay()};
    if (call == applicationInterface + QStringLiteral(".Activate a{sv}")) {
        m_requests.activate();
        return QVariantList();
    }
    if (call == applicationInterface + QStringLiteral(".Open asa{sv}")) {
        const QStringList files = arguments[0].toStringList();
        // The editor has room for one.
        const QUrl file(files.value(0), QUrl::StrictMode);
        if (file.isLocalFile())
            m_requests.openFile(file);
        else
            m_requests.activate();
        return QVariantList();
    }
    if (call == applicationInterface + QStringLiteral(".ActivateAction sava{sv}") &&
        arguments[0].toString() == openVideoAction) {
        m_requests.openPicker();
        return QVariantList();
    }
    return std::nullopt;
}

} // namespace keldra
