#include "platform/portal/ScreenCastSession.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "platform/portal/PortalRequest.h"
#include "platform/qt/BusCall.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace keldra {
namespace {

const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

constexpr uint monitors = 1;
constexpr uint cursorHidden = 1;
constexpr uint cursorEmbedded = 2;
/// The answer holds until the program ends, so that its user is asked once.
constexpr uint whileRunning = 1;

/// The first of a(ua{sv}).
std::optional<std::uint32_t> firstStream(const QVariant& streams) {
    const auto array = streams.value<QDBusArgument>();
    if (array.currentType() != QDBusArgument::ArrayType)
        return std::nullopt;
    array.beginArray();
    if (array.atEnd())
        return std::nullopt;
    std::uint32_t node = 0;
    QVariantMap properties;
    array.beginStructure();
    array >> node >> properties;
    return node;
}

void openRemote(const QDBusConnection& bus, const QString& session, Completion<int> done) {
    constexpr std::chrono::seconds patience{25};
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, screenCastInterface,
                                               QStringLiteral("OpenPipeWireRemote"));
    call.setArguments({QVariant::fromValue(QDBusObjectPath(session)), QVariantMap()});
    callBus(bus, call, patience, [done = std::move(done)](const Result<QDBusMessage>& reply) {
        if (!reply)
            return done(fail(reply.error()));
        // The reply closes its own.
        const auto descriptor = reply->arguments().value(0).value<QDBusUnixFileDescriptor>();
        done(::fcntl(descriptor.fileDescriptor(), F_DUPFD_CLOEXEC, 0));
    });
}

} // namespace

QCoro::Task<Result<std::shared_ptr<ScreenCastSession>>> ScreenCastSession::open(QDBusConnection bus, bool showsCursor,
                                                                                std::shared_ptr<QString> restoreToken) {
    static int count = 0;
    const QVariantMap naming{{QStringLiteral("session_handle_token"), QStringLiteral("keldra%1").arg(++count)}};
    CO_TRY_LET(const QVariantMap made, co_await awaitCompletion<QVariantMap>([&](auto done) {
                   PortalRequest::send(bus, screenCastInterface, QStringLiteral("CreateSession"), {}, naming,
                                       std::move(done));
               }));
    const QString path = made.value(QStringLiteral("session_handle")).toString();
    const std::shared_ptr<ScreenCastSession> session(new ScreenCastSession(bus, path));

    const QVariant handle = QVariant::fromValue(QDBusObjectPath(path));
    QVariantMap sources{{QStringLiteral("types"), monitors},
                        {QStringLiteral("multiple"), false},
                        {QStringLiteral("cursor_mode"), showsCursor ? cursorEmbedded : cursorHidden},
                        {QStringLiteral("persist_mode"), whileRunning}};
    if (!restoreToken->isEmpty())
        sources[QStringLiteral("restore_token")] = *restoreToken;
    CO_TRY(co_await awaitCompletion<QVariantMap>([&](auto done) {
        PortalRequest::send(bus, screenCastInterface, QStringLiteral("SelectSources"), {handle}, sources,
                            std::move(done));
    }));
    CO_TRY_LET(const QVariantMap started, co_await awaitCompletion<QVariantMap>([&](auto done) {
                   PortalRequest::send(bus, screenCastInterface, QStringLiteral("Start"), {handle, QString()}, {},
                                       std::move(done));
               }));
    *restoreToken = started.value(QStringLiteral("restore_token")).toString();
    const auto node = firstStream(started.value(QStringLiteral("streams")));
    if (!node)
        co_return fail(portalError(QStringLiteral("The desktop portal gave no stream of the screen.")));
    session->m_node = *node;
    CO_TRY_LET(session->m_descriptor,
               co_await awaitCompletion<int>([&](auto done) { openRemote(bus, path, std::move(done)); }));
    if (session->m_descriptor < 0)
        co_return fail(portalError(QStringLiteral("The desktop portal gave no way to its stream.")));
    co_return session;
}

ScreenCastSession::ScreenCastSession(const QDBusConnection& bus, QString path) : m_bus(bus), m_path(std::move(path)) {
    m_bus.connect(portalService, m_path, sessionInterface, QStringLiteral("Closed"), this, SLOT(handleClosed()));
}

ScreenCastSession::~ScreenCastSession() {
    // Nobody waits for an answer.
    m_bus.send(QDBusMessage::createMethodCall(portalService, m_path, sessionInterface, QStringLiteral("Close")));
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void ScreenCastSession::handleClosed() {
    Q_EMIT closed();
}

} // namespace keldra
