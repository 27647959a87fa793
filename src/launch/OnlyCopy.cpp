#include "launch/OnlyCopy.h"

#include "async/AwaitCompletion.h"
#include "base/Log.h"

namespace keldra {
namespace {

using Applications = std::shared_ptr<RunningApplications>;

/// Long enough for the file that a copy finishes on its way out.
constexpr std::chrono::seconds patienceWithFarewell{30};
constexpr std::chrono::seconds patienceWithTheSilent{10};
constexpr std::chrono::seconds patienceWithTheKilled{5};

QCoro::Task<bool> handOver(Applications applications, RunningApplication other, AgentRequest request) {
    if (other.hasEarlierName || request == AgentRequest{})
        co_return false;
    const Result<void> handedOver = co_await awaitCompletion<void>([&](Completion<void> done) {
        if (request.opensPicker)
            applications->openPicker(other, std::move(done));
        else
            applications->openFile(other, request.file, std::move(done));
    });
    co_return handedOver.has_value();
}

QCoro::Task<bool> hasGone(Applications applications, RunningApplication other, std::chrono::seconds patience) {
    const Result<bool> gone =
        co_await awaitCompletion<bool>([&](auto done) { applications->waitForEnd(other, patience, std::move(done)); });
    co_return gone.value_or(false);
}

/// False when the other one stays.
QCoro::Task<bool> end(Applications applications, RunningApplication other) {
    bool isAsked = false;
    if (!other.hasEarlierName) {
        const Result<bool> answer =
            co_await awaitCompletion<bool>([&](auto done) { applications->makeWay(other, std::move(done)); });
        if (answer && !*answer)
            co_return false;
        isAsked = answer.has_value();
    }
    if (!isAsked)
        applications->terminate(other);
    const bool isGone = co_await hasGone(applications, other, isAsked ? patienceWithFarewell : patienceWithTheSilent);
    if (!isGone) {
        logLine("[KELDRA]", "another copy does not end, and is ended");
        applications->forceTerminate(other);
        (void)co_await hasGone(applications, other, patienceWithTheKilled);
    }
    co_return true;
}

} // namespace

QCoro::Task<bool> becomeOnlyCopy(std::shared_ptr<RunningApplications> applications, AgentRequest request,
                                 ApplicationRequests requests) {
    // Copies that start at the same moment may each find nobody; one of them is faster, and the others look again.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const Result<QList<RunningApplication>> others = co_await awaitCompletion<QList<RunningApplication>>(
            [&](auto done) { applications->others(std::move(done)); });
        for (const RunningApplication& other : others.value_or(QList<RunningApplication>())) {
            const bool isHandedOver = co_await handOver(applications, other, request);
            if (isHandedOver)
                co_return false;
            const bool isFree = co_await end(applications, other);
            if (!isFree)
                co_return false;
        }
        const Result<bool> claimed =
            co_await awaitCompletion<bool>([&](auto done) { applications->claim(requests, std::move(done)); });
        if (!claimed)
            logFailure("claiming the program's name", claimed.error());
        if (claimed.value_or(true))
            co_return true;
    }
    co_return false;
}

} // namespace keldra
