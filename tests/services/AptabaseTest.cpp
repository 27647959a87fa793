#include "services/AnalyticsWorld.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using testing::AnalyticsWorld;

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

Result<HttpResponse> noNetwork() {
    return fail(Error{"QNetworkReply", 1, "Connection refused", {}});
}

TEST_F(AptabaseTest, TakesOnlyGoodKeysAndSaysSoInTheLog) {
    struct Row {
        const char* key;
        std::optional<QString> host;
        const char* log;
        bool hasClient;
    };
    const auto invalid = [](const std::string& key) {
        return "[KELDRA Analytics] The Aptabase App Key " + key + " is invalid. Tracking will be disabled.\n";
    };
    const std::string two = invalid("A-EU"), four = invalid("A-EU-1-2"), region = invalid("A-XX-123456789"),
                      lower = invalid("A-eu-123456789"), bare = invalid("--"), lines = invalid("A EU");
    const Row rows[] = {
        {"A-EU-123456789", {}, "", true},
        {"A-SH-123456789", "https://own.example.org", "", true},
        {"A-SH-123456789",
         {},
         "[KELDRA Analytics] Aptabase: Host parameter must be defined when using Self-Hosted App Key. Tracking will be "
         "disabled.\n",
         false},
        {"A-EU", {}, two.c_str(), false},
        {"A-EU-1-2", {}, four.c_str(), false},
        {"A-XX-123456789", {}, region.c_str(), false},
        {"A-eu-123456789", {}, lower.c_str(), false},
        {"--", {}, bare.c_str(), false},
        {"A\nEU", {}, lines.c_str(), false},
        // Built without: off, and no word of it.
        {"", {}, "", false},
        {"A-US-123456789", {}, "", false},
        {"A-SH-123456789", "", "", false},
        {"A-SH-123456789", "file:///etc", "", false},
        {"A-SH-123456789", "https://own.example.org?x=", "", false},
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

TEST_F(AptabaseTest, ServersWordsStayShortAndOnOneLine) {
    aptabase.initialize(world.key);
    world.session.answer = [](const HttpRequest&) {
        return HttpResponse{400, "\x1b[2Jbad\r\n" + QByteArray(60'000, 'x'), {}};
    };
    aptabase.trackEvent("event");
    ::testing::internal::CaptureStdout();
    flush();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "[KELDRA Analytics] Aptabase: Failed to send 1 events because of 400  [2Jbad  " + std::string(191, 'x') +
                  ". Will not retry.\n");
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

    Q_EMIT world.application.didBecomeActive();
    world.time.settle();
    EXPECT_EQ(world.sentNames(), QStringList{"one"});
    aptabase.trackEvent("two");
    world.time.advance(59s);
    EXPECT_EQ(world.sentNames().size(), 1);
    world.time.advance(1s);
    EXPECT_EQ(world.sentNames(), (QStringList{"one", "two"}));

    // A second activation starts the interval anew; there is still one timer.
    world.time.advance(30s);
    Q_EMIT world.application.didBecomeActive();
    aptabase.trackEvent("three");
    world.time.settle();
    EXPECT_EQ(world.sentNames().size(), 3);
    aptabase.trackEvent("four");
    world.time.advance(59s);
    EXPECT_EQ(world.sentNames().size(), 3);
    world.time.advance(1s);
    EXPECT_EQ(world.sentNames().size(), 4);

    aptabase.trackEvent("last");
    Q_EMIT world.application.willTerminate();
    world.time.settle();
    EXPECT_EQ(world.sentNames().last(), "last");
    aptabase.trackEvent("too late");
    world.time.advance(10min);
    EXPECT_EQ(world.sentNames().last(), "last");
}

TEST_F(AptabaseTest, TheTimerWaitsForAFlushThatWasAskedFor) {
    aptabase.initialize(world.key);
    Q_EMIT world.application.didBecomeActive();
    world.time.settle();
    world.session.holds = true;
    aptabase.trackEvent("one");
    aptabase.flush([] {});
    world.time.settle();
    aptabase.trackEvent("two");
    world.time.advance(2min);
    EXPECT_EQ(world.sentNames(), QStringList{"one"});
    world.session.holds = false;
    world.session.answerFirst(noNetwork());
    world.time.settle();
    EXPECT_EQ(world.sentNames(), (QStringList{"one", "two"}));
    world.time.advance(1min);
    EXPECT_EQ(world.sentNames(), (QStringList{"one", "two", "one"}));
}

TEST_F(AptabaseTest, OptionsSetIntervalAndDebugMark) {
    struct Row {
        InitOptions options;
        Duration interval;
        bool isDebug;
    };
    const Row rows[] = {
        {{}, 60s, false},
        {{.host = {}, .flushInterval = {}, .trackingMode = TrackingMode::asRelease}, 60s, false},
        {{.host = {}, .flushInterval = {}, .trackingMode = TrackingMode::asDebug}, 2s, true},
        {{.host = {}, .flushInterval = 250ms, .trackingMode = TrackingMode::asDebug}, 250ms, true},
    };
    for (const Row& row : rows) {
        AnalyticsWorld own;
        Aptabase client = own.aptabase();
        client.initialize(own.key, row.options);
        Q_EMIT own.application.didBecomeActive();
        own.time.settle();
        client.trackEvent("event");
        own.time.advance(row.interval - 1ms);
        EXPECT_EQ(own.session.requests.size(), 0u);
        own.time.advance(1ms);
        ASSERT_EQ(own.session.requests.size(), 1u);
        EXPECT_EQ(own.sentEvents().first().value("systemProps").toObject().value("isDebug").toBool(), row.isDebug);
    }
}

TEST_F(AptabaseTest, AnswersThatComeAfterItsEndHarmNobody) {
    world.session.holds = true;
    {
        Aptabase shortLived = world.aptabase();
        shortLived.initialize(world.key);
        shortLived.trackEvent("one");
        shortLived.flush([] { FAIL() << "its owner is gone"; });
        world.time.settle();
        ASSERT_EQ(world.session.requests.size(), 1u);
        shortLived.flush([] { FAIL() << "its owner is gone"; });
    }
    world.session.answerFirst(noNetwork());
    Q_EMIT world.application.didBecomeActive();
    world.time.advance(10min);
    EXPECT_EQ(world.session.requests.size(), 1u);
}

TEST(AnalyticsEvent, TakesNumbersTextsAndBooleansOnly) {
    struct Row {
        QVariant value;
        const char* json;
    };
    const Row taken[] = {
        {1, "1"},
        {-5ll, "-5"},
        {std::numeric_limits<qint64>::max(), "9223372036854775807"},
        {4'000'000'000u, "4000000000"},
        {1.5, "1.5"},
        {0.1f, "0.1"},
        {true, "true"},
        {QStringLiteral("a\"\n\u00e9"), "\"a\\\"\\n\u00e9\""},
    };
    for (const Row& row : taken) {
        const auto sifted = siftedProperties({{"key", row.value}});
        ASSERT_TRUE(sifted) << row.json;
        EXPECT_EQ(QJsonDocument(*sifted).toJson(QJsonDocument::Compact), QByteArray("{\"key\":") + row.json + "}");
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
