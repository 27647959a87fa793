#include "doubles/HttpServer.h"
#include "doubles/Waiting.h"
#include "services/AnalyticsWorld.h"
#include "services/QtHttpSession.h"
#include "services/Telemetry.h"
#include "services/UpdateCheck.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::AnalyticsWorld;

/// Our client against a web server, over the loopback. The network takes its own time; everything else takes the
/// world's.
class HttpTest : public ::testing::Test {
protected:
    AnalyticsWorld world;
    HttpServer server;
    QtHttpSession session{world.time.scheduler()};

    /// Lets the main loop and the virtual time run until the condition holds; false when that takes too long.
    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        return test::runUntil([&] {
            world.time.settle();
            return condition();
        });
    }

    [[nodiscard]] bool isFlushed(Aptabase& client) {
        bool isDone = false;
        client.flush([&] { isDone = true; });
        return runUntil([&] { return isDone; });
    }

    /// What the update check finds.
    std::optional<UpdateManifest> fetch(const QString& host, const QString& localVersion = "1.0",
                                        HttpSession* other = nullptr) {
        std::optional<std::optional<UpdateManifest>> answer;
        auto task = fetchAvailableUpdate(other ? *other : session, host, localVersion);
        task.then([&](std::optional<UpdateManifest> manifest) { answer = std::move(manifest); });
        EXPECT_TRUE(runUntil([&] { return answer.has_value(); }));
        return answer.value_or(std::nullopt);
    }
};

TEST_F(HttpTest, EveryByteOfABatchIsAsAgreed) {
    Aptabase client = world.aptabase(session, server.host());
    Telemetry telemetry(client, {world.key, {}, {}});
    telemetry.setEnabled(true);
    telemetry.trackAppLaunched();
    world.now = world.now.addMSecs(1999);
    telemetry.trackRecordingStarted(CaptureMode::region, true, false);
    ASSERT_TRUE(isFlushed(client));

    ASSERT_EQ(server.requests().size(), 1);
    const HttpServer::Request& request = server.requests().first();
    EXPECT_EQ(request.line, "POST /api/v0/events HTTP/1.1");
    const QByteArray system =
        R"("systemProps":{"appBuildNumber":"815","appVersion":"1.4.2","deviceModel":"Fast Machine 9","isDebug":false,)"
        R"("locale":"en","osName":"Linux","osVersion":"12","sdkVersion":"aptabase-swift@0.3.11"})";
    EXPECT_EQ(request.body, R"([{"eventName":"app_launched","props":{},"sessionId":"170925119800000007",)" + system +
                                R"(,"timestamp":"2024-02-29T23:59:58Z"},)"
                                R"({"eventName":"recording_started","props":{"camera":1,"microphone":0,"mode":"area"},)"
                                R"("sessionId":"170925119800000007",)" +
                                system + R"(,"timestamp":"2024-02-29T23:59:59Z"}])");
    const QMap<QByteArray, QByteArray> headers = {
        {"host", server.host().mid(7).toUtf8()},
        {"content-type", "application/json"},
        {"app-key", "A-EU-123456789"},
        {"user-agent", "Linux/12 en"},
        {"content-length", QByteArray::number(request.body.size())},
        {"connection", "Keep-Alive"},
        {"accept-encoding", "identity"},
        {"accept-language", "*"},
    };
    EXPECT_EQ(request.headers, headers) << "these, and nothing beside them";
}

TEST_F(HttpTest, NoKeySmugglesAHeaderInAndNoCookieIsKept) {
    server.setAnswers({HttpServer::answer(200, {}, "Set-Cookie: id=1; Path=/\r\n")});
    Aptabase client = world.aptabase(session, server.host());
    client.initialize("A-EU-1\r\nInjected: \u00e91");
    for (int round = 0; round < 2; ++round) {
        client.trackEvent("event");
        ASSERT_TRUE(isFlushed(client));
    }
    ASSERT_EQ(server.requests().size(), 2);
    EXPECT_EQ(server.requests().last().headers["app-key"], "A-EU-1Injected: 1");
    EXPECT_EQ(server.requests().last().headers.size(), 8);
}

TEST_F(HttpTest, BatchesFareAsTheServerAnswers) {
    struct Row {
        const char* name;
        HttpServer::Answer answer;
        bool isKept;
    };
    const QByteArray endless(1'000'000, 'x');
    const Row rows[] = {
        {"204", {"HTTP/1.1 204 No Content\r\n\r\n"}, false},
        {"299 of another type", HttpServer::answer(299, "<html>\xff</html>", "Content-Type: text/html\r\n"), false},
        {"200 with a body without end", {"HTTP/1.1 200 OK\r\n\r\n" + endless}, false},
        {"400 with a body without end", {"HTTP/1.1 400 Bad\r\n\r\n" + endless}, false},
        {"499", HttpServer::answer(499), false},
        {"500 with a body without end", {"HTTP/1.1 500 Busy\r\n\r\n" + endless}, true},
        {"599 in no text", HttpServer::answer(599, "\xff"), true},
        {"401", HttpServer::answer(401, {}, "WWW-Authenticate: Basic realm=\"x\"\r\n"), false},
        {"407", HttpServer::answer(407, {}, "Proxy-Authenticate: Basic realm=\"x\"\r\n"), false},
        {"permanent redirect", HttpServer::answer(308, {}, "Location: /elsewhere\r\n"), false},
        {"truncated", {"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf", true}, true},
        {"hangs up", {{}, true}, true},
        {"no HTTP", {"SSH-2.0-Server\r\n", true}, true},
    };
    for (const Row& row : rows) {
        HttpServer own;
        own.setAnswers({row.answer});
        Aptabase client = world.aptabase(session, own.host());
        client.initialize(world.key);
        client.trackEvent("event");
        ::testing::internal::CaptureStdout();
        const bool isDone = isFlushed(client);
        ::testing::internal::GetCapturedStdout();
        ASSERT_TRUE(isDone) << row.name;
        // More than one where a connection ends before any answer: Qt tries again by itself.
        const qsizetype count = own.requests().size();
        ASSERT_GE(count, 1) << row.name;
        const auto first = own.requests().first();
        own.setAnswers({HttpServer::answer(200)});
        ASSERT_TRUE(isFlushed(client));
        EXPECT_EQ(own.requests().size() - count, row.isKept ? 1 : 0) << row.name;
        for (const auto& request : own.requests())
            EXPECT_EQ(std::pair(request.line, request.body), std::pair(first.line, first.body)) << row.name;
    }
}

TEST_F(HttpTest, SixtyEventsAreThreeRequestsAndTheFailedOneComesLast) {
    server.setAnswers({HttpServer::answer(200), HttpServer::answer(500), HttpServer::answer(200)});
    Aptabase client = world.aptabase(session, server.host());
    client.initialize(world.key);
    for (int number = 0; number < 60; ++number)
        client.trackEvent(QString::number(number));
    ::testing::internal::CaptureStdout();
    ASSERT_TRUE(isFlushed(client));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "[KELDRA Analytics] Aptabase: Failed to send 25 events. Reason: 500 \n");
    ASSERT_TRUE(isFlushed(client));
    std::vector<std::pair<qsizetype, QString>> batches;
    for (const auto& request : server.requests()) {
        const QJsonArray events = QJsonDocument::fromJson(request.body).array();
        batches.emplace_back(events.size(), events.first()["eventName"].toString());
    }
    EXPECT_EQ(batches, (std::vector<std::pair<qsizetype, QString>>{{25, "0"}, {25, "25"}, {10, "50"}, {25, "25"}}));
    ASSERT_TRUE(isFlushed(client));
    EXPECT_EQ(server.requests().size(), 4) << "an empty queue sends nothing";
}

TEST_F(HttpTest, AServerThatNeverAnswersIsGivenAMinute) {
    // The second one drips: it is never silent for long.
    const HttpServer::Answer drips{"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nx"};
    for (const HttpServer::Answer& answer : {HttpServer::silence(), drips}) {
        HttpServer slow;
        slow.setAnswers({answer});
        Aptabase client = world.aptabase(session, slow.host());
        client.initialize(world.key);
        client.trackEvent("event");
        bool isDone = false;
        client.flush([&] { isDone = true; });
        ASSERT_TRUE(runUntil([&] { return slow.requests().size() == 1; }));
        world.time.advance(59'999ms);
        EXPECT_FALSE(isDone);
        ::testing::internal::CaptureStdout();
        world.time.advance(1ms);
        EXPECT_TRUE(runUntil([&] { return isDone; }));
        ::testing::internal::GetCapturedStdout();

        slow.setAnswers({HttpServer::answer(200)});
        EXPECT_TRUE(isFlushed(client));
        EXPECT_EQ(slow.requests().size(), 2) << "the event was kept";
    }
}

TEST_F(HttpTest, FindsANewerVersion) {
    const QByteArray manifest = R"({"version":"1.10","downloadURL":"https://example.org/get"})";
    server.setAnswers({HttpServer::answer(200, manifest)});
    EXPECT_EQ(fetch(server.host(), "1.9"), (UpdateManifest{"1.10", QUrl("https://example.org/get")}));
    EXPECT_EQ(fetch(server.host(), "1.10"), std::nullopt);
    EXPECT_EQ(fetch(server.host(), ""), std::nullopt);
    ASSERT_EQ(server.requests().size(), 3);
    EXPECT_EQ(server.requests().first().line, "GET /apps/keldra/version.json HTTP/1.1");
    const QMap<QByteArray, QByteArray> headers = {
        {"host", server.host().mid(7).toUtf8()}, {"user-agent", "KELDRA"}, {"connection", "Keep-Alive"},
        {"accept-encoding", "identity"},         {"accept-language", "*"},
    };
    EXPECT_EQ(server.requests().first().headers, headers);
}

TEST_F(HttpTest, FollowsAMovedManifestAFewTimes) {
    const auto manifest = HttpServer::answer(200, R"({"version":"2","downloadURL":"https://example.org"})");
    const auto moved = HttpServer::answer(301, {}, "Location: /moved.json\r\n");
    server.setAnswers({moved, HttpServer::answer(302, "body", "Location: again\r\n"), manifest});
    EXPECT_TRUE(fetch(server.host()));
    QList<QByteArray> lines;
    for (const auto& request : server.requests())
        lines.append(request.line);
    EXPECT_EQ(lines, (QList<QByteArray>{"GET /apps/keldra/version.json HTTP/1.1", "GET /moved.json HTTP/1.1",
                                        "GET /again HTTP/1.1"}));
    server.setAnswers({moved});
    EXPECT_FALSE(fetch(server.host()));
    EXPECT_EQ(server.requests().size(), 3 + 5) << "a loop ends";
    for (const char* place : {"file:///etc/passwd", "//", "http://", ""}) {
        server.setAnswers({HttpServer::answer(302, {}, QByteArray("Location: ") + place + "\r\n"), manifest});
        EXPECT_FALSE(fetch(server.host())) << place;
    }
}

TEST_F(HttpTest, DoesNotFollowToALessSafePlace) {
    world.session.answer = [&](const HttpRequest& request) {
        HttpResponse answer{200, R"({"version":"2","downloadURL":"https://example.org"})", {}};
        if (request.url.path() == u"/apps/keldra/version.json")
            answer = {301, {}, QUrl(request.url.host() == u"safe" ? "http://other/a" : "https://other/a")};
        return answer;
    };
    EXPECT_FALSE(fetch("https://safe", "1.0", &world.session));
    EXPECT_EQ(world.session.requests.size(), 1u);
    EXPECT_TRUE(fetch("https://safer", "1.0", &world.session));
}

TEST_F(HttpTest, NoAnswerOfAnyKindIsAnUpdate) {
    const QByteArray manifest = R"({"version":"2","downloadURL":"https://example.org"})";
    const std::pair<const char*, HttpServer::Answer> rows[] = {
        {"201", HttpServer::answer(201, manifest)},
        {"500", HttpServer::answer(500)},
        {"a page", HttpServer::answer(200, "<html></html>", "Content-Type: text/html\r\n")},
        {"truncated", {"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + manifest, true}},
        {"hangs up", {{}, true}},
        {"huge", {"HTTP/1.1 200 OK\r\nContent-Length: 1000000000000\r\n\r\n" + QByteArray(5'000'000, ' ')}},
        {"no HTTP", {"hello", true}},
    };
    for (const auto& [name, answer] : rows) {
        HttpServer own;
        own.setAnswers({answer});
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const auto manifestFound = fetch(own.host());
        EXPECT_EQ(::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr(), "") << name;
        EXPECT_EQ(manifestFound, std::nullopt) << name;
        EXPECT_GE(own.requests().size(), 1) << name;
    }
    EXPECT_EQ(fetch(HttpServer().host()), std::nullopt) << "nobody listens";
}

} // namespace
} // namespace keldra
