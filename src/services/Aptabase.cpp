#include "services/Aptabase.h"

#include "services/AnalyticsLog.h"

#include <QStringList>

namespace keldra {
namespace {

const QString selfHosted = QStringLiteral("SH");

} // namespace

Aptabase::Aptabase(Application& application, AnalyticsTools tools, QMap<QString, QString> hosts)
    : m_application(application)
    , m_tools(std::move(tools))
    , m_hosts(std::move(hosts))
    , m_environment{false, application.facts()} {
    m_hosts.insert(selfHosted, QString());
}

void Aptabase::initialize(const QString& appKey, const InitOptions& options) {
    const auto url = apiUrl(appKey, options);
    if (!url)
        return;
    if (options.trackingMode != TrackingMode::readFromEnvironment)
        m_environment.isDebug = options.trackingMode == TrackingMode::asDebug;
    const Duration usualInterval = std::chrono::seconds(m_environment.isDebug ? 2 : 60);
    m_client = std::make_unique<AptabaseClient>(m_tools, *url, appKey, m_environment,
                                                options.flushInterval.value_or(usualInterval));
    m_observer = std::make_unique<QObject>();
    QObject::connect(&m_application, &Application::didBecomeActive, m_observer.get(),
                     [this] { m_client->startPolling(); });
    QObject::connect(&m_application, &Application::willTerminate, m_observer.get(),
                     [this] { m_client->stopPolling(); });
}

std::optional<QUrl> Aptabase::apiUrl(const QString& appKey, const InitOptions& options) const {
    // Turned off when this was built, which is nothing to tell.
    if (appKey.isEmpty())
        return std::nullopt;
    const QStringList parts = appKey.split(u'-');
    if (parts.size() != 3 || !m_hosts.contains(parts[1])) {
        logAnalytics("The Aptabase App Key " + appKey + " is invalid. Tracking will be disabled.");
        return std::nullopt;
    }
    if (parts[1] == selfHosted && !options.host) {
        logAnalytics(
            "Aptabase: Host parameter must be defined when using Self-Hosted App Key. Tracking will be disabled.");
        return std::nullopt;
    }
    return serviceUrl(parts[1] == selfHosted ? *options.host : m_hosts[parts[1]], QStringLiteral("/api/v0/events"));
}

void Aptabase::trackEvent(const QString& name, const QVariantMap& properties) {
    auto sifted = siftedProperties(properties);
    if (!sifted)
        logAnalytics(QString::fromStdString(sifted.error().message));
    else if (m_client)
        m_client->track(name, std::move(*sifted));
}

void Aptabase::flush(Work done) {
    if (m_client)
        m_client->flush(std::move(done));
    else
        m_tools.mainQueue.post(std::move(done));
}

} // namespace keldra
