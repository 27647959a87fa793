#pragma once

#include "async/Scheduler.h"
#include "platform/RunningApplications.h"

#include <QDBusConnection>

#include <memory>

namespace keldra {

/// Who the program is on the session bus.
struct BusIdentity {
    /// Owned by the one copy that others find; also the name of an interface, and, with slashes, a path.
    QString name;
    /// What the program called itself once.
    QString earlierName;
};

class AgentOnBus;

/// Copies of the program that meet on the session bus. What they ask of each other are the calls of
/// org.freedesktop.Application, which desktops know too ("Activate", "Open", and "ActivateAction" of "open-video"), and
/// "MakeWay" of an interface named after the program.
class DBusRunningApplications final : public RunningApplications {
public:
    /// `scheduler` lives longer.
    DBusRunningApplications(QDBusConnection bus, BusIdentity identity, Scheduler& scheduler);
    ~DBusRunningApplications() override;

    void others(Completion<QList<RunningApplication>> done) override;
    void makeWay(const RunningApplication& application, Completion<bool> done) override;
    void openFile(const RunningApplication& application, QUrl file, Completion<void> done) override;
    void openPicker(const RunningApplication& application, Completion<void> done) override;
    void terminate(const RunningApplication& application) override;
    void forceTerminate(const RunningApplication& application) override;
    void waitForEnd(const RunningApplication& application, std::chrono::milliseconds patience,
                    Completion<bool> done) override;
    void claim(ApplicationRequests requests, Completion<bool> done) override;

private:
    QDBusMessage methodOf(const RunningApplication& application, const QString& interface, const QString& method,
                          const QVariantList& arguments) const;

    QDBusConnection m_bus;
    BusIdentity m_identity;
    Scheduler& m_scheduler;
    std::unique_ptr<AgentOnBus> m_agent;
};

} // namespace keldra
