#include "services/Telemetry.h"

#include "services/AnalyticsWorld.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::AnalyticsWorld;

class TelemetryTest : public ::testing::Test {
protected:
    AnalyticsWorld world;
    Aptabase aptabase = world.aptabase();
    Telemetry telemetry{aptabase, {world.key, {}, {}}};

    /// Name and properties of everything that is sent now, one line each.
    QStringList sent() {
        world.session.requests.clear();
        aptabase.flush([] {});
        world.time.settle();
        QStringList lines;
        for (const QJsonObject& event : world.sentEvents())
            lines.append(event["eventName"].toString() + ' ' +
                         QString::fromUtf8(QJsonDocument(event["props"].toObject()).toJson(QJsonDocument::Compact)));
        return lines;
    }
};

TEST_F(TelemetryTest, NamesEveryEventAndBucketsDurations) {
    telemetry.setEnabled(true);
    telemetry.trackAppLaunched();
    telemetry.trackRecordingStarted(CaptureMode::region, true, false);
    telemetry.trackRecordingStarted(CaptureMode::window, false, true);
    telemetry.trackExportFinished(true, 0);
    telemetry.trackExportFinished(false, 1e9);
    QStringList wanted{
        R"(app_launched {})",
        R"(recording_started {"camera":1,"microphone":0,"mode":"area"})",
        R"(recording_started {"camera":0,"microphone":1,"mode":"window"})",
        R"(export_finished {"duration":"under_30s","outcome":"ok"})",
        R"(export_finished {"duration":"over_10m","outcome":"failed"})",
    };
    const std::pair<double, const char*> durations[] = {
        {29.9, "under_30s"}, {30, "30s_to_2m"},      {119.9, "30s_to_2m"},
        {120, "2m_to_10m"},  {599.999, "2m_to_10m"}, {600, "over_10m"},
    };
    for (const auto& [seconds, bucket] : durations) {
        telemetry.trackRecordingFinished(seconds);
        wanted.append(QStringLiteral(R"(recording_finished {"duration":"%1"})").arg(bucket));
    }
    EXPECT_EQ(sent(), wanted);
}

TEST_F(TelemetryTest, ReportsEachFeatureOncePerRun) {
    telemetry.setEnabled(true);
    QStringList wanted;
    for (const char* name :
         {"zoom", "background", "shadow", "padding", "roundness", "clip_audio", "normalize", "fades", "split", "trim"})
        wanted.append(QStringLiteral(R"(editor_feature_used {"feature":"%1"})").arg(name));
    for (int round = 0; round < 2; ++round)
        for (int feature = 0; feature < wanted.size(); ++feature)
            telemetry.trackFeatureUsed(TelemetryFeature(feature));
    EXPECT_EQ(sent(), wanted);
}

TEST_F(TelemetryTest, SaysNothingWithoutConsent) {
    trackOneOfEach(telemetry);
    telemetry.setEnabled(false);
    trackOneOfEach(telemetry);
    Q_EMIT world.application.didBecomeActive();
    EXPECT_EQ(sent(), QStringList());

    telemetry.setEnabled(true);
    telemetry.trackFeatureUsed(TelemetryFeature::zoom);
    EXPECT_EQ(sent(), QStringList()) << "used before the consent, so reported for this run";
    telemetry.trackFeatureUsed(TelemetryFeature::trim);
    telemetry.setEnabled(false);
    trackOneOfEach(telemetry);
    EXPECT_EQ(sent(), QStringList{R"(editor_feature_used {"feature":"trim"})"}) << "what was queued before still goes";

    // Consent anew does not begin a new client: its session goes on.
    telemetry.setEnabled(true);
    telemetry.trackAppLaunched();
    EXPECT_EQ(sent().size(), 1);
    EXPECT_EQ(world.random, 8u) << "one session id was made";
}

} // namespace
} // namespace keldra
