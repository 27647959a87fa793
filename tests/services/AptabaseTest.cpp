#include "services/AnalyticsWorld.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::AnalyticsWorld;

class AptabaseTest : public ::testing::Test {
protected:
    AnalyticsWorld world;
    Aptabase aptabase = world.aptabase();

    /// Flushes and lets everything answer.
    void flush() {
        bool isDone = false;
        aptabase.flush([&] { isDone = true; });
        world.time.settle();
        EXPECT_TRUE(isDone);
    }
};

TEST_F(AptabaseTest, TakesOnlyGoodKeysAndSaysSoInTheLog) {
    const auto invalid = [](const std::string& key) {
        return "[KELDRA Analytics] The Aptabase App Key " + key + " is invalid. Tracking will be disabled.\n";
    };
    struct Row {
        const char* key;
        std::optional<QString> host;
        std::string log;
        bool hasClient;
    };
    const Row rows[] = {
        {"A-EU-123456789", {}, "", true},
        {"A-SH-123456789", "https://own.example.org", "", true},
        {"A-SH-123456789",
         {},
         "[KELDRA Analytics] Aptabase: Host parameter must be defined when using Self-Hosted App Key. Tracking will be "
         "disabled.\n",
         false},
        {"A-EU", {}, invalid("A-EU"), false},
        {"A-EU-1-2", {}, invalid("A-EU-1-2"), false},
        {"A-XX-123456789", {}, invalid("A-XX-123456789"), false},
        {"A\nEU", {}, invalid("A EU"), false},
        // Built without: off, and no word of it.
        {"", {}, "", false},
        {"A-US-123456789", {}, "", false},
        {"A-SH-123456789", "", "", false},
        {"A-SH-123456789", "file:///etc", "", false},
    };
    for (const Row& row : rows) {
        Aptabase client = world.aptabase();
        ::testing::internal::CaptureStdout();
        client.initialize(row.key, {.host = row.host, .flushInterval = {}});
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), row.log) << row.key;
        world.session.requests.clear();
        client.trackEvent("event");
        bool isDone = false;
        client.flush([&] { isDone = true; });
        world.time.settle();
        EXPECT_TRUE(isDone);
        EXPECT_EQ(world.session.requests.size(), row.hasClient ? 1u : 0u) << row.key;
    }
}

TEST_F(AptabaseTest, AnHourOfSilenceBeginsANewSession) {
    aptabase.initialize(world.key);
    for (const int seconds : {0, 3600, 3600, 3601, 1}) {
        world.now = world.now.addSecs(seconds);
        aptabase.trackEvent("event");
    }
    world.now = world.now.addMSecs(3'600'001);
    aptabase.trackEvent("event");
    flush();
    QStringList ids;
    for (const QJsonObject& event : world.sentEvents())
        ids.append(event["sessionId"].toString());
    // The time of its making, then the random part.
    const QString first = QStringLiteral("170925119800000007"), second = QStringLiteral("170926199900000008"),
                  third = QStringLiteral("170926560000000009");
    EXPECT_EQ(ids, (QStringList{first, first, first, second, second, third}));
}

TEST_F(AptabaseTest, SendsFromTheFirstActivationOn) {
    aptabase.initialize(world.key);
    aptabase.trackEvent("one");
    world.time.advance(10min);
    EXPECT_EQ(world.sentNames(), QStringList());

    const auto sendsAfterAMinute = [&](const QString& name) {
        aptabase.trackEvent(name);
        world.time.advance(59s);
        EXPECT_NE(world.sentNames().last(), name);
        world.time.advance(1s);
        EXPECT_EQ(world.sentNames().last(), name);
    };
    Q_EMIT world.application.didBecomeActive();
    world.time.settle();
    EXPECT_EQ(world.sentNames(), QStringList{"one"});
    sendsAfterAMinute("two");
    // A second activation starts the interval anew; there is still one timer.
    world.time.advance(30s);
    Q_EMIT world.application.didBecomeActive();
    world.time.settle();
    sendsAfterAMinute("three");

    aptabase.trackEvent("last");
    Q_EMIT world.application.willTerminate();
    world.time.settle();
    aptabase.trackEvent("too late");
    world.time.advance(10min);
    EXPECT_EQ(world.sentNames(), (QStringList{"one", "two", "three", "last"}));
}

TEST(AnalyticsEvent, TakesNumbersTextsAndBooleansOnly) {
    const std::pair<QVariant, const char*> taken[] = {
        {std::numeric_limits<qint64>::max(), "9223372036854775807"},
        {4'000'000'000u, "4000000000"},
        {0.1f, "0.1"},
        {true, "true"},
        {QStringLiteral("a\"\n\u00e9"), "\"a\\\"\\n\u00e9\""},
    };
    for (const auto& [value, json] : taken) {
        const auto sifted = siftedProperties({{"key", value}});
        ASSERT_TRUE(sifted) << json;
        EXPECT_EQ(QJsonDocument(*sifted).toJson(QJsonDocument::Compact), QByteArray("{\"key\":") + json + "}");
    }
    for (const QVariant& value :
         {QVariant(QVariantList{1, 2}), QVariant(QVariantMap{{"a", 1}}), QVariant(), QVariant(QDate()),
          QVariant(qQNaN()), QVariant(float(qInf())), QVariant(QByteArray("x"))}) {
        const auto refused = siftedProperties({{"good", 1}, {"the key", value}});
        ASSERT_FALSE(refused) << value.typeName();
        EXPECT_EQ(refused.error().message,
                  "Aptabase: Props with key the key has an unsupported value type. Supported types are: String, Int, "
                  "Double, Float and Boolean. Event will be discarded");
    }
}

TEST_F(AptabaseTest, AnUnsupportedPropertyDropsItsEventAndNothingElse) {
    aptabase.initialize(world.key);
    aptabase.trackEvent("before", {{"a", 1}});
    aptabase.trackEvent("dropped", {{"a", 1}, {"list", QVariantList{1}}});
    aptabase.trackEvent("after");
    flush();
    EXPECT_EQ(world.sentNames(), (QStringList{"before", "after"}));
}

} // namespace
} // namespace keldra
