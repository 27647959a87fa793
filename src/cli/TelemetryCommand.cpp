#include "cli/TelemetryCommand.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "services/Telemetry.h"

#include <QRandomGenerator>

#include <vector>

namespace keldra {
namespace {

/// Keeps requests instead of sending them.
class KeepingSession final : public HttpSession {
public:
    explicit KeepingSession(Executor& mainQueue) : m_mainQueue(mainQueue) {}

    void send(HttpRequest request, Completion<HttpResponse> done) override {
        m_requests.push_back(std::move(request));
        m_mainQueue.post([done = std::move(done)] { done(HttpResponse{200, {}, {}}); });
    }
    const std::vector<HttpRequest>& requests() const { return m_requests; }

private:
    Executor& m_mainQueue;
    std::vector<HttpRequest> m_requests;
};

/// What the agent would send to this account for one of each event, made by the very code that sends.
QCoro::Task<std::vector<HttpRequest>> requestsFor(const CommandContext& context, AnalyticsAccount account) {
    KeepingSession session(context.mainQueue);
    const AnalyticsTools tools{session,
                               context.mainQueue,
                               context.mainQueue,
                               *context.scheduler,
                               [] { return QDateTime::currentDateTimeUtc(); },
                               [](quint32 bound) { return QRandomGenerator::global()->bounded(bound); }};
    Aptabase client(context.application, tools, account.hosts);
    Telemetry telemetry(client, account);
    telemetry.setEnabled(true);
    trackOneOfEach(telemetry);
    // The sending itself fails for nobody: what a server says is not heard here.
    (void)co_await awaitCompletion<void>([&](Completion<void> done) { client.flush([done] { done({}); }); });
    co_return session.requests();
}

const AnalyticsAccount sampleAccount{
    QStringLiteral("A-DEV-000000000"), {{QStringLiteral("DEV"), QStringLiteral("https://analytics.invalid")}}, {}};

} // namespace

QCoro::Task<Result<void>> runTelemetry(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const Arguments arguments, parseArguments(words, {{"--show", OptionValue::none}}));
    if (!arguments.positional.isEmpty())
        co_return fail(
            usageError(QStringLiteral("telemetry takes no argument \"%1\"").arg(arguments.positional.first())));
    if (!arguments.has("--show"))
        co_return fail(usageError(QStringLiteral("telemetry needs --show")));

    auto requests = co_await requestsFor(context, context.analytics);
    if (requests.empty()) {
        writeNotice(QStringLiteral("This build has no analytics host: nothing is ever sent. With one, it would be:"));
        requests = co_await requestsFor(context, sampleAccount);
    }
    for (const HttpRequest& request : requests) {
        writeNotice(QStringLiteral("POST ") + request.url.toString());
        for (const HttpHeader& header : request.headers)
            writeNotice(QString::fromUtf8(header.name + ": " + header.value));
        if (!writeResult(*request.body + '\n'))
            co_return fail(unwritableOutput());
    }
    co_return {};
}

} // namespace keldra
