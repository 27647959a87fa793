#include "platform/qt/DBusRunningApplications.h"

#include "async/AwaitCompletion.h"
#include "platform/qt/AgentOnBus.h"
#include "platform/qt/BusCall.h"

#include <QCoroTask>
#include <QDBusServiceWatcher>
#include <QPointer>

#include <csignal>
#include <unistd.h>

namespace keldra {
namespace {

/// A copy that says nothing for so long hangs.
constexpr std::chrono::seconds patience{5};

QCoro::Task<std::optional<QVariant>> askBus(QDBusConnection bus, QString method, QString argument) {
    const QDBusMessage call = busMethod(method, {argument});
    const Result<QDBusMessage> reply =
        co_await awaitCompletion<QDBusMessage>([&](auto done) { callBus(bus, call, patience, std::move(done)); });
    if (!reply || reply->arguments().isEmpty())
        co_return std::nullopt;
    co_return reply->arguments().first();
}

QCoro::Task<> findOwners(QDBusConnection bus, BusIdentity identity, Completion<QList<RunningApplication>> done) {
    QList<RunningApplication> found;
    const QStringList names{identity.name, identity.earlierName};
    for (const QString& name : names) {
        const auto owner = co_await askBus(bus, QStringLiteral("GetNameOwner"), name);
        if (!owner || owner->toString() == bus.baseService())
            continue;
        const auto process = co_await askBus(bus, QStringLiteral("GetConnectionUnixProcessID"), owner->toString());
        if (process)
            found.append({owner->toString(), process->toLongLong(), name == identity.earlierName});
    }
    done(found);
}

void sendSignal(const RunningApplication& application, int number) {
    if (application.processID > 1 && application.processID != ::getpid())
        ::kill(pid_t(application.processID), number);
}

Completion<QDBusMessage> withoutAnswer(Completion<void> done) {
    return [done = std::move(done)](Result<QDBusMessage> reply) {
        done(reply ? Result<void>() : fail(std::move(reply.error())));
    };
}

/// One wait: for the name to go, or for the time to be over.
class EndWatch : public QObject {
public:
    EndWatch(const QDBusConnection& bus, const QString& name, Completion<bool> done)
        : m_watcher(name, bus, QDBusServiceWatcher::WatchForUnregistration), m_done(std::move(done)) {
        connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { answer(true); });
    }
    void setTimer(Timer timer) { m_timer = std::move(timer); }
    void answer(bool hasGone) {
        if (!m_done)
            return;
        deleteLater();
        m_timer.cancel();
        std::exchange(m_done, nullptr)(hasGone);
    }

private:
    QDBusServiceWatcher m_watcher;
    Completion<bool> m_done;
    Timer m_timer;
};

} // namespace

DBusRunningApplications::DBusRunningApplications(QDBusConnection bus, BusIdentity identity, Scheduler& scheduler)
    : m_bus(std::move(bus)), m_identity(std::move(identity)), m_scheduler(scheduler) {}

DBusRunningApplications::~DBusRunningApplications() = default;

void DBusRunningApplications::others(Completion<QList<RunningApplication>> done) {
    findOwners(m_bus, m_identity, std::move(done));
}

QDBusMessage DBusRunningApplications::methodOf(const RunningApplication& application, const QString& interface,
                                               const QString& method, const QVariantList& arguments) const {
    auto call = QDBusMessage::createMethodCall(application.handle, objectPathOf(m_identity.name), interface, method);
    call.setArguments(arguments);
    return call;
}

void DBusRunningApplications::makeWay(const RunningApplication& application, Completion<bool> done) {
    callBus(m_bus, methodOf(application, m_identity.name, QStringLiteral("MakeWay"), {}), patience,
            [done = std::move(done)](Result<QDBusMessage> reply) {
                if (reply)
                    done(reply->arguments().value(0).toBool());
                else
                    done(fail(std::move(reply.error())));
            });
}

void DBusRunningApplications::openFile(const RunningApplication& application, QUrl file, Completion<void> done) {
    const QVariantList arguments{QStringList{file.toString(QUrl::FullyEncoded)}, QVariantMap{}};
    callBus(m_bus, methodOf(application, applicationInterface, QStringLiteral("Open"), arguments), patience,
            withoutAnswer(std::move(done)));
}

void DBusRunningApplications::openPicker(const RunningApplication& application, Completion<void> done) {
    const QVariantList arguments{openVideoAction, QVariantList{}, QVariantMap{}};
    callBus(m_bus, methodOf(application, applicationInterface, QStringLiteral("ActivateAction"), arguments), patience,
            withoutAnswer(std::move(done)));
}

void DBusRunningApplications::terminate(const RunningApplication& application) {
    sendSignal(application, SIGTERM);
}

void DBusRunningApplications::forceTerminate(const RunningApplication& application) {
    sendSignal(application, SIGKILL);
}

void DBusRunningApplications::waitForEnd(const RunningApplication& application, std::chrono::milliseconds wait,
                                         Completion<bool> done) {
    const QPointer<EndWatch> watch = new EndWatch(m_bus, application.handle, std::move(done));
    watch->setTimer(m_scheduler.after(wait, [watch] {
        if (watch)
            watch->answer(false);
    }));
    // It may have gone before the watch began.
    callBus(m_bus, busMethod(QStringLiteral("NameHasOwner"), {application.handle}), patience,
            [watch](const Result<QDBusMessage>& reply) {
                if (watch && reply && !reply->arguments().value(0).toBool())
                    watch->answer(true);
            });
}

void DBusRunningApplications::claim(ApplicationRequests requests, Completion<bool> done) {
    m_agent = std::make_unique<AgentOnBus>(m_bus, m_identity.name, std::move(requests));
    constexpr quint32 doNotQueue = 4;
    callBus(m_bus, busMethod(QStringLiteral("RequestName"), {m_identity.name, doNotQueue}), patience,
            [done = std::move(done)](Result<QDBusMessage> reply) {
                if (!reply)
                    return done(fail(std::move(reply.error())));
                const quint32 answer = reply->arguments().value(0).toUInt();
                constexpr quint32 primaryOwner = 1, alreadyOwner = 4;
                done(answer == primaryOwner || answer == alreadyOwner);
            });
}

} // namespace keldra
