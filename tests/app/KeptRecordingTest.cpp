#include "app/KeptRecording.h"

#include "app/SettingsFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {
namespace {

/// What a start before wrote, and what a start now tells of: "name@second" each, "-" in front for an empty file.
struct KeptRow {
    const char* name;
    QStringList recovery;
    QStringList output;
    QString told;
    QString wanted;
};

void PrintTo(const KeptRow& row, std::ostream* out) {
    *out << row.name;
}

class KeptRecordingTest : public ::testing::TestWithParam<KeptRow> {
protected:
    static void write(const QString& folder, const QStringList& files) {
        for (const QString& each : files) {
            const QStringList parts = each.split('@');
            QFile file(folder + '/' + parts[0].mid(parts[0].startsWith('-')));
            ASSERT_TRUE(file.open(QIODevice::ReadWrite));
            if (!parts[0].startsWith('-'))
                file.write("movie");
            file.flush();
            ASSERT_TRUE(
                file.setFileTime(QDateTime::fromSecsSinceEpoch(parts[1].toInt()), QFileDevice::FileModificationTime));
        }
    }
};

TEST_P(KeptRecordingTest, IsToldOnceAndTheNewestFirst) {
    QTemporaryDir folder;
    const QString recovery = folder.filePath("recovery"), output = folder.filePath("output");
    QDir(folder.path()).mkdir("output");
    if (!GetParam().recovery.isEmpty())
        QDir(folder.path()).mkdir("recovery");
    write(recovery, GetParam().recovery);
    write(output, GetParam().output);
    AppPreferences preferences(openSettings(folder.filePath("a.ini")), openSettings(folder.filePath("b.ini")), {});
    preferences.setValue(preferenceKeys::toldOfKeptRecording, GetParam().told);

    const auto found = takeUntoldKeptRecording(recovery, output, preferences);
    EXPECT_EQ(found ? found->fileName() : QString(), GetParam().wanted);
    EXPECT_EQ(takeUntoldKeptRecording(recovery, output, preferences), std::nullopt) << "told already";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, KeptRecordingTest,
    ::testing::Values(KeptRow{"none", {}, {}, {}, {}}, KeptRow{"one", {"a.mov@100"}, {}, {}, "a.mov"},
                      KeptRow{"newest", {"a.mov@300", "b.mov@200", "c.mov@100"}, {}, {}, "a.mov"},
                      KeptRow{"onAnotherDisk", {"a.mov@100"}, {".recovered-b.mov@200"}, {}, ".recovered-b.mov"},
                      KeptRow{"wholeOnesAreNoneOfThese", {}, {"KELDRA-1.mov@100", ".hidden.mov@100"}, {}, {}},
                      KeptRow{"told", {"a.mov@100"}, {}, "100000", {}},
                      KeptRow{"newerThanTold", {"a.mov@100", "b.mov@101"}, {}, "100000", "b.mov"},
                      KeptRow{"nothingInIt", {"-a.mov@100"}, {}, {}, {}},
                      KeptRow{"damagedMemory", {"a.mov@100"}, {}, "yesterday", "a.mov"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace keldra
