#pragma once

#include "platform/CaptureSelection.h"
#include "services/Aptabase.h"

#include <set>

namespace keldra {

/// What of the editor was used.
enum class TelemetryFeature { zoom, background, shadow, padding, roundness, clipAudio, normalize, fades, split, trim };

/// The key and the hosts that a deployment was built with; empty means off.
struct AnalyticsAccount {
    QString key;
    /// By region, "US", "EU" and "DEV".
    QMap<QString, QString> hosts;
    QString selfHost;
};

/// The only one who talks to the analytics client: decides whether anything is sent, names the events, and lets no
/// exact length out. Nothing here fails or is seen by the user. Main thread; one per process.
class Telemetry {
public:
    /// `client` lives longer.
    Telemetry(Aptabase& client, AnalyticsAccount account) : m_client(client), m_account(std::move(account)) {}

    /// The user's consent, as stored or as just chosen. The first consent of a run starts the client; without consent
    /// nothing more is reported, and what is queued still goes.
    void setEnabled(bool isEnabled);

    void trackAppLaunched();
    void trackRecordingStarted(CaptureMode mode, bool hasCamera, bool hasMicrophone);
    void trackRecordingFinished(double durationSeconds);
    void trackExportFinished(bool isSuccess, double durationSeconds);
    /// Reports each feature once per run. One that was used without consent counts as reported.
    void trackFeatureUsed(TelemetryFeature feature);

private:
    void track(const QString& eventName, const QVariantMap& properties = {});

    Aptabase& m_client;
    AnalyticsAccount m_account;
    bool m_isEnabled = false;
    bool m_hasInitialized = false;
    std::set<TelemetryFeature> m_reportedFeatures;
};

/// One of each event that there is.
void trackOneOfEach(Telemetry& telemetry);

} // namespace keldra
