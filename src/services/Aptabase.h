#pragma once

#include "services/AptabaseClient.h"

#include <QMap>

#include <memory>
#include <optional>

namespace keldra {

/// Whether events count as a developer's. What the environment says is the default.
enum class TrackingMode { asDebug = 0, asRelease = 1, readFromEnvironment = 2 };

struct InitOptions {
    /// Where a self-hosted service lies.
    std::optional<QString> host;
    std::optional<Duration> flushInterval;
    TrackingMode trackingMode = TrackingMode::readFromEnvironment;
};

/// The client of the Aptabase analytics service. Until it is initialised with a good key there is no client behind it
/// and every call does nothing. Main thread; one per process.
class Aptabase {
public:
    /// `hosts`: the endpoint of each region of an app key, "US", "EU" and "DEV"; an empty one is off. `application`
    /// lives longer.
    Aptabase(Application& application, AnalyticsTools tools, QMap<QString, QString> hosts);

    /// `appKey` is "A-<region>-<digits>"; the region "SH" takes the host from the options. A bad key is told to the log
    /// only. From the next activation of the program on, events are sent.
    void initialize(const QString& appKey, const InitOptions& options = {});

    /// Queues an event. A property that is no number, text or boolean drops the event.
    void trackEvent(const QString& name, const QVariantMap& properties = {});

    /// Sends what is queued; `done` runs on main, later, even when there is no client.
    void flush(Work done);

private:
    /// Nothing when the key is bad or its host is off.
    std::optional<QUrl> apiUrl(const QString& appKey, const InitOptions& options) const;

    Application& m_application;
    AnalyticsTools m_tools;
    QMap<QString, QString> m_hosts;
    EnvironmentInfo m_environment;
    std::unique_ptr<AptabaseClient> m_client;
    /// Ends the notifications of a client with it.
    std::unique_ptr<QObject> m_observer;
};

} // namespace keldra
