#include "launch/OnlyCopy.h"

#include "doubles/VirtualTime.h"
#include "launch/ScriptedRunningApplications.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

using test::ScriptedCopy;
using test::ScriptedRunningApplications;

/// Copies that run already, what this start is for, and what came of it.
struct CopyRow {
    const char* name;
    QList<ScriptedCopy> others;
    AgentRequest request;
    /// What was done to them, in order, and whether this copy went "on" or "away".
    const char* wanted;
};

void PrintTo(const CopyRow& row, std::ostream* out) {
    *out << row.name;
}

const AgentRequest file{QUrl("file:///a.mov"), false}, picker{{}, true};
constexpr bool earlier = true;

ScriptedCopy copy(QString handle, QStringList habits = {}, bool hasEarlierName = false) {
    return {{std::move(handle), 100, hasEarlierName}, std::move(habits)};
}

class OnlyCopyTest : public ::testing::TestWithParam<CopyRow> {};

TEST_P(OnlyCopyTest, Becomes) {
    VirtualTime time;
    const auto applications = std::make_shared<ScriptedRunningApplications>(time, GetParam().others);
    QString end = "nowhere";
    becomeOnlyCopy(applications, GetParam().request, {}).then([&](bool goesOn) { end = goesOn ? "on" : "away"; });
    time.advance(std::chrono::minutes(5));
    EXPECT_EQ((applications->log + QStringList{end}).join(' ').toStdString(), GetParam().wanted);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OnlyCopyTest,
    ::testing::Values(
        CopyRow{"alone", {}, {}, "claim on"}, CopyRow{"aloneWithAFile", {}, file, "claim on"},
        CopyRow{"idleCopyMakesWay", {copy("a")}, {}, "makeWay:a gone:a claim on"},
        CopyRow{"recordingCopyStays", {copy("a", {"records"})}, {}, "makeWay:a away"},
        CopyRow{"fileIsHandedOver", {copy("a")}, file, "open:a:file:///a.mov away"},
        CopyRow{"fileIsHandedToARecordingCopy", {copy("a", {"records"})}, file, "open:a:file:///a.mov away"},
        CopyRow{"pickerIsHandedOver", {copy("a")}, picker, "pick:a away"},
        CopyRow{"hangingCopyIsToldToEnd", {copy("a", {"deaf"})}, {}, "makeWay:a TERM:a gone:a claim on"},
        CopyRow{"hangingCopyGetsNoFile",
                {copy("a", {"deaf"})},
                file,
                "open:a:file:///a.mov makeWay:a TERM:a gone:a claim on"},
        CopyRow{"stuckCopyIsKilled", {copy("a", {"deaf", "stuck"})}, {}, "makeWay:a TERM:a KILL:a gone:a claim on"},
        CopyRow{"politeCopyThatNeverEndsIsKilled", {copy("a", {"stuck"})}, {}, "makeWay:a KILL:a gone:a claim on"},
        CopyRow{"earlierNameKnowsSignalsOnly", {copy("a", {}, earlier)}, file, "TERM:a gone:a claim on"},
        CopyRow{"bothNames", {copy("a"), copy("b", {}, earlier)}, {}, "makeWay:a gone:a TERM:b gone:b claim on"},
        CopyRow{"earlierNameFallsBesideARecordingCopy",
                {copy("b", {}, earlier), copy("a", {"records"})},
                {},
                "TERM:b gone:b makeWay:a away"},
        CopyRow{"twinWasFasterAndMakesWay", {copy("a", {"late"})}, {}, "claim makeWay:a gone:a claim on"},
        CopyRow{"twinWasFasterAndTakesTheFile", {copy("a", {"late"})}, file, "claim open:a:file:///a.mov away"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(OnlyCopyWithoutABus, GoesOn) {
    VirtualTime time;
    const auto applications = std::make_shared<ScriptedRunningApplications>(time, QList<ScriptedCopy>());
    applications->hasBus = false;
    bool goesOn = false;
    becomeOnlyCopy(applications, {}, {}).then([&](bool answer) { goesOn = answer; });
    time.settle();
    EXPECT_TRUE(goesOn);
}

} // namespace
} // namespace keldra
