// The services as the agent will hold them, for tests that watch a program from outside: sends one of each usage event
// and looks for an update, then says what it found and ends.
//
//   keldra_services_probe [--consent] [--analytics-host URL] [--update-host URL]

#include "async/AwaitCompletion.h"
#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "base/SerialQueue.h"
#include "platform/qt/QtApplication.h"
#include "services/QtHttpSession.h"
#include "services/Telemetry.h"
#include "services/UpdateCheck.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRandomGenerator>

#include <cstdio>

namespace {

using namespace keldra;

QCoro::Task<> run(Telemetry& telemetry, Aptabase& client, HttpSession& session, Application& application,
                  QString updateHost) {
    trackOneOfEach(telemetry);
    (void)co_await awaitCompletion<void>([&](Completion<void> done) { client.flush([done] { done({}); }); });
    const auto manifest = co_await fetchAvailableUpdate(session, updateHost, application.facts().version);
    Q_EMIT application.didBecomeActive();
    std::printf("newer version: %s\n", manifest ? qPrintable(manifest->version) : "none");
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication qt(argc, argv);
    QCommandLineParser parser;
    parser.addOptions({{QStringLiteral("consent"), {}},
                       {QStringLiteral("analytics-host"), {}, QStringLiteral("URL")},
                       {QStringLiteral("update-host"), {}, QStringLiteral("URL")}});
    parser.process(qt);

    const auto scheduler = std::make_shared<MainScheduler>();
    MainQueue mainQueue(scheduler);
    QtApplication application(QStringLiteral("1.0"), QStringLiteral("1"));
    QtHttpSession session(*scheduler);
    SerialQueue queue("KELDRA.Analytics");
    const AnalyticsTools tools{session,
                               queue,
                               mainQueue,
                               *scheduler,
                               [] { return QDateTime::currentDateTimeUtc(); },
                               [](quint32 bound) { return QRandomGenerator::global()->bounded(bound); }};
    Aptabase client(application, tools, {});
    Telemetry telemetry(client, {QStringLiteral("A-SH-123456789"), {}, parser.value(QStringLiteral("analytics-host"))});
    telemetry.setEnabled(parser.isSet(QStringLiteral("consent")));
    mainQueue.post([&] { run(telemetry, client, session, application, parser.value(QStringLiteral("update-host"))); });
    return QCoreApplication::exec();
}
