#include "base/SerialQueue.h"
#include "doubles/PumpedExecutor.h"
#include "doubles/ScriptedHttpSession.h"
#include "services/EventDispatcher.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <thread>

namespace keldra {
namespace {

constexpr int threadCount = 4;
constexpr int perThread = 25'000;

std::vector<int> everyNumber() {
    std::vector<int> numbers(threadCount * perThread);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

TEST(EventDispatcher, SendsEventsOfManyThreadsExactlyOnceWhileFlushesOverlap) {
    PumpedExecutor main;
    ScriptedHttpSession session(main);
    std::vector<int> sent;
    int requests = 0;
    session.answer = [&](const HttpRequest& request) -> Result<HttpResponse> {
        session.requests.pop_back();
        // The server fails now and then.
        if (++requests % 50 == 0)
            return HttpResponse{503, {}, {}};
        for (const QJsonValue& event : QJsonDocument::fromJson(*request.body).array())
            sent.push_back(event["eventName"].toString().toInt());
        return HttpResponse{200, {}, {}};
    };
    SerialQueue queue("test.analytics");
    const auto dispatcher = std::make_shared<EventDispatcher>(QUrl("https://example.org"), "A-EU-1", ApplicationFacts(),
                                                              session, queue, main);
    std::atomic<int> finishedThreads = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&, thread] {
            const QDateTime now = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
            for (int number = thread * perThread; number < (thread + 1) * perThread; ++number)
                dispatcher->enqueue({now, "session", QString::number(number), {}, {}});
            ++finishedThreads;
        });

    ::testing::internal::CaptureStdout();
    bool isComplete = true;
    for (bool isLast = false; isComplete && !isLast;) {
        isLast = finishedThreads == threadCount && sent.size() + 25 > std::size_t(threadCount * perThread);
        int finished = 0;
        dispatcher->flush([&] { ++finished; });
        dispatcher->flush([&] { ++finished; });
        isComplete = main.pumpUntil([&] { return finished == 2; });
    }
    for (auto& thread : threads)
        thread.join();
    ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(isComplete);
    std::sort(sent.begin(), sent.end());
    EXPECT_EQ(sent, everyNumber());
}

} // namespace
} // namespace keldra
