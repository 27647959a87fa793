#include "async/MainScheduler.h"
#include "doubles/ChildProcess.h"
#include "doubles/Waiting.h"
#include "platform/qt/BusCall.h"
#include "platform/qt/DBusRunningApplications.h"

#include <QDBusMessage>

#include <gtest/gtest.h>
#include <unistd.h>

namespace keldra {
namespace {

using test::Answer;

const BusIdentity identity{"com.example.Recorder", "com.example.Earlier"};

/// A copy of the program with a connection of its own, and what it was asked.
struct Copy {
    explicit Copy(const QString& connection, const BusIdentity& who = identity)
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection))
        , name(connection)
        , applications(bus, who, scheduler) {}
    ~Copy() { QDBusConnection::disconnectFromBus(name); }

    Result<bool> claim() {
        Answer<Result<bool>> answer;
        applications.claim({[this] {
                                log.append("makeWay");
                                return makesWay;
                            },
                            [this] { log.append("activate"); },
                            [this](const QUrl& file) { log.append("open:" + file.toLocalFile()); },
                            [this] { log.append("pick"); }},
                           answer.taker());
        EXPECT_TRUE(answer.wait());
        return answer.value.value_or(false);
    }
    QList<RunningApplication> others() {
        Answer<Result<QList<RunningApplication>>> answer;
        applications.others(answer.taker());
        EXPECT_TRUE(answer.wait());
        return answer.value.value_or(fail(Error{})).value_or(QList<RunningApplication>());
    }

    MainScheduler scheduler;
    QDBusConnection bus;
    QString name;
    DBusRunningApplications applications;
    QStringList log;
    bool makesWay = true;
};

/// What any program on the bus may send.
TEST(DBusRunningApplicationsTest, AnswerTheDesktopAndRefuseNonsense) {
    Copy copy("first"), asking("second");
    ASSERT_EQ(copy.claim(), true);
    const auto send = [&](const QString& interface, const QString& method, const QVariantList& arguments) {
        auto call = QDBusMessage::createMethodCall(identity.name, "/com/example/Recorder", interface, method);
        call.setArguments(arguments);
        Answer<Result<QDBusMessage>> answer;
        callBus(asking.bus, call, test::deadline, answer.taker());
        EXPECT_TRUE(answer.wait());
        return answer.value->has_value();
    };
    const QString application = "org.freedesktop.Application";
    const QVariantMap nothing;
    EXPECT_TRUE(send(application, "Activate", {nothing}));
    EXPECT_TRUE(send(application, "Open", {QStringList{"file:///a.mov", "file:///b.mov"}, nothing}));
    EXPECT_TRUE(send(application, "Open", {QStringList{"https://example.org/a.mov"}, nothing}));
    EXPECT_TRUE(send(application, "Open", {QStringList{}, nothing}));
    EXPECT_FALSE(send(application, "ActivateAction", {"format-disk", QVariantList{}, nothing}));
    EXPECT_FALSE(send(application, "Open", {"file:///a.mov"}));
    EXPECT_FALSE(send(application, "MakeWay", {}));
    EXPECT_FALSE(send(identity.name, "MakeWay", {true}));
    EXPECT_EQ(copy.log, (QStringList{"activate", "open:/a.mov", "activate", "activate"}));
}

TEST(DBusRunningApplicationsTest, WaitForAnEnd) {
    auto first = std::make_unique<Copy>("first");
    Copy second("second");
    ASSERT_EQ(first->claim(), true);
    const RunningApplication other = second.others().value(0);
    Answer<Result<bool>> early, whole, late;
    second.applications.waitForEnd(other, std::chrono::milliseconds(10), early.taker());
    ASSERT_TRUE(early.wait());
    EXPECT_EQ(*early.value, false);
    second.applications.waitForEnd(other, test::deadline, whole.taker());
    first.reset();
    ASSERT_TRUE(whole.wait());
    EXPECT_EQ(*whole.value, true);
    second.applications.waitForEnd(other, test::deadline, late.taker());
    ASSERT_TRUE(late.wait());
    EXPECT_EQ(*late.value, true) << "gone before the wait";
}

TEST(DBusRunningApplicationsTest, EndTheOthersProcessAndNoOther) {
    Copy copy("first");
    for (const std::int64_t process : {0, 1, -1, int(::getpid())})
        copy.applications.forceTerminate({"", process, false});
    for (const bool isForced : {false, true}) {
        ChildProcess child({"sh", "-c", "echo $$; exec tail -f /dev/null"});
        const RunningApplication other{"", std::stoll(child.readLine()), false};
        if (isForced)
            copy.applications.forceTerminate(other);
        else
            copy.applications.terminate(other);
        EXPECT_EQ(child.wait(), -1);
    }
}

} // namespace
} // namespace keldra
