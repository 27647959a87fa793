#include "services/Telemetry.h"

namespace keldra {
namespace {

QString modeName(CaptureMode mode) {
    switch (mode) {
    case CaptureMode::region:
        return QStringLiteral("area");
    case CaptureMode::window:
        return QStringLiteral("window");
    case CaptureMode::display:
        return QStringLiteral("display");
    }
    return {};
}

QString featureName(TelemetryFeature feature) {
    switch (feature) {
    case TelemetryFeature::zoom:
        return QStringLiteral("zoom");
    case TelemetryFeature::background:
        return QStringLiteral("background");
    case TelemetryFeature::shadow:
        return QStringLiteral("shadow");
    case TelemetryFeature::padding:
        return QStringLiteral("padding");
    case TelemetryFeature::roundness:
        return QStringLiteral("roundness");
    case TelemetryFeature::clipAudio:
        return QStringLiteral("clip_audio");
    case TelemetryFeature::normalize:
        return QStringLiteral("normalize");
    case TelemetryFeature::fades:
        return QStringLiteral("fades");
    case TelemetryFeature::split:
        return QStringLiteral("split");
    case TelemetryFeature::trim:
        return QStringLiteral("trim");
    }
    return {};
}

QString durationBucket(double seconds) {
    if (seconds < 30)
        return QStringLiteral("under_30s");
    if (seconds < 120)
        return QStringLiteral("30s_to_2m");
    if (seconds < 600)
        return QStringLiteral("2m_to_10m");
    return QStringLiteral("over_10m");
}

} // namespace

void Telemetry::setEnabled(bool isEnabled) {
    m_isEnabled = isEnabled;
    if (!isEnabled || m_hasInitialized)
        return;
    InitOptions options;
    options.host = m_account.selfHost;
    m_client.initialize(m_account.key, options);
    m_hasInitialized = true;
}

void Telemetry::track(const QString& eventName, const QVariantMap& properties) {
    if (m_isEnabled && m_hasInitialized)
        m_client.trackEvent(eventName, properties);
}

void Telemetry::trackAppLaunched() {
    track(QStringLiteral("app_launched"));
}

void Telemetry::trackRecordingStarted(CaptureMode mode, bool hasCamera, bool hasMicrophone) {
    track(QStringLiteral("recording_started"),
          {{"mode", modeName(mode)}, {"camera", int(hasCamera)}, {"microphone", int(hasMicrophone)}});
}

void Telemetry::trackRecordingFinished(double durationSeconds) {
    track(QStringLiteral("recording_finished"), {{"duration", durationBucket(durationSeconds)}});
}

void Telemetry::trackExportFinished(bool isSuccess, double durationSeconds) {
    track(QStringLiteral("export_finished"), {{"outcome", isSuccess ? QStringLiteral("ok") : QStringLiteral("failed")},
                                              {"duration", durationBucket(durationSeconds)}});
}

void Telemetry::trackFeatureUsed(TelemetryFeature feature) {
    if (m_reportedFeatures.insert(feature).second)
        track(QStringLiteral("editor_feature_used"), {{"feature", featureName(feature)}});
}

void trackOneOfEach(Telemetry& telemetry) {
    telemetry.trackAppLaunched();
    telemetry.trackRecordingStarted(CaptureMode::display, true, false);
    telemetry.trackRecordingFinished(75);
    telemetry.trackExportFinished(true, 20);
    telemetry.trackFeatureUsed(TelemetryFeature::zoom);
}

} // namespace keldra
