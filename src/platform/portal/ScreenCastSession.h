#pragma once

#include "base/Result.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

namespace keldra {

/// The user's leave to look at one monitor, given in a dialog of the desktop. It ends with this object. Main thread.
class ScreenCastSession final : public QObject {
    Q_OBJECT

public:
    /// Asks the user, or not, where the portal still knows `restoreToken`, which is empty at first and becomes what
    /// stands for this answer. Errors: no, or there is no portal that can do it.
    static QCoro::Task<Result<std::shared_ptr<ScreenCastSession>>> open(QDBusConnection bus, bool showsCursor,
                                                                        std::shared_ptr<QString> restoreToken);
    ~ScreenCastSession() override;

    /// Of the stream in the PipeWire that takeDescriptor() leads to.
    std::uint32_t node() const { return m_node; }
    /// A connection to PipeWire that sees this stream alone; the caller's to close. -1 when it was taken before.
    int takeDescriptor() { return std::exchange(m_descriptor, -1); }

Q_SIGNALS:
    /// The user or the desktop has ended it.
    void closed();

private:
    ScreenCastSession(const QDBusConnection& bus, QString path);
    Q_SLOT void handleClosed();

    QDBusConnection m_bus;
    const QString m_path;
    std::uint32_t m_node = 0;
    int m_descriptor = -1;
};

} // namespace keldra
