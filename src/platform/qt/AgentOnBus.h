#pragma once

#include "platform/RunningApplications.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QVariantList>

#include <optional>

namespace keldra {

inline const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
/// The action that lets the user pick a video.
inline const QString openVideoAction = QStringLiteral("open-video");

/// "/com/keldra/KELDRA" for "com.keldra.KELDRA".
QString objectPathOf(const QString& busName);

/// What others on the bus may ask of this copy, while it lives.
class AgentOnBus : public QDBusVirtualObject {
public:
    AgentOnBus(QDBusConnection bus, QString name, ApplicationRequests requests);
    ~AgentOnBus() override;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    /// Nothing for a call that is not known.
    std::optional<QVariantList> answer(const QDBusMessage& message);

    QDBusConnection m_bus;
    QString m_name;
    ApplicationRequests m_requests;
};

} // namespace keldra
