#include "app/AppPreferences.h"

#include "app/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {
namespace {

namespace keys = preferenceKeys;

/// Two settings files and the user's folders, all in a place of their own.
class AppPreferencesTest : public testing::Test {
protected:
    AppPreferencesTest() { QDir(folder.path()).mkpath("Desktop"); }

    QString path(const QString& name) const { return folder.filePath(name); }

    void write(const QString& name, const QByteArray& text) {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    AppPreferences open() {
        return AppPreferences(openSettings(path("current.ini")), openSettings(path("legacy.ini")),
                              {path("Desktop"), folder.path()});
    }

    QMap<QString, QString> stored(const QString& name = "current.ini") {
        const auto settings = openSettings(path(name));
        QMap<QString, QString> values;
        for (const QString& key : settings->allKeys())
            values[key] = settings->value(key).toString();
        return values;
    }

    QTemporaryDir folder;
};

/// Every setting that does not read as its fallback, as "key=value"; enumerators by their numbers.
QStringList read(const AppPreferences& from) {
    QStringList words;
    const auto add = [&](const auto&... keys) {
        const auto addOne = [&](const auto& key) {
            if (const auto value = from.value(key); value != key.fallback)
                words.append(QString("%1=%2").arg(key.name).arg(double(value)));
        };
        (addOne(keys), ...);
    };
    add(keys::hasCompletedOnboarding, keys::hasCompletedInterfaceTour, keys::analyticsEnabled,
        keys::showClickIndicators, keys::clickSoundEnabled, keys::clickSoundStyle, keys::countdownDuration,
        keys::clickIndicatorIntensity, keys::showCursorHighlight, keys::cursorHighlightIntensity,
        keys::cursorHighlightSize, keys::recordingQuality, keys::cameraOverlaySize, keys::cameraOverlayShape);
    for (const TextPreferenceKey& key : {keys::cameraDeviceID, keys::microphoneDeviceID})
        if (const QString text = from.value(key); !text.isEmpty())
            words.append(QString("%1=%2").arg(key.name, text));
    if (const auto date = from.updateReminderDate())
        words.append("updateReminderDate=" + date->toUTC().toString(Qt::ISODateWithMs));
    return words;
}

struct Row {
    const char* name;
    QByteArray text;
    QString values;
};

class AppPreferencesReading : public AppPreferencesTest, public testing::WithParamInterface<Row> {};

TEST_P(AppPreferencesReading, ReadsWhatIsUsableAndFallsBackOtherwise) {
    write("current.ini", "[General]\n" + GetParam().text + "\n");
    EXPECT_EQ(read(open()).join("; "), GetParam().values);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AppPreferencesReading,
    testing::Values(
        Row{"nothing", "", ""},
        Row{"usable",
            "hasCompletedOnboarding=true\nhasCompletedInterfaceTour=1\nanalyticsEnabled=TRUE\n"
            "preferences.countdownSeconds=10\npreferences.cursorHighlightSize=60.5\n"
            "preferences.microphoneDeviceID=\"alsa_input.pci-0000_00, 1f\"\n"
            "updateReminderDate=2026-03-01T10:20:30.456Z",
            "hasCompletedOnboarding=1; hasCompletedInterfaceTour=1; analyticsEnabled=1; "
            "preferences.countdownSeconds=10; preferences.cursorHighlightSize=60.5; "
            "preferences.microphoneDeviceID=alsa_input.pci-0000_00, 1f; "
            "updateReminderDate=2026-03-01T10:20:30.456Z"},
        Row{"unknownWords",
            "preferences.clickSoundStyle=Classic\npreferences.recordingQuality=ultra\n"
            "preferences.cameraOverlaySize=medium\npreferences.countdownSeconds=7",
            ""},
        Row{"countdownHuge", "preferences.countdownSeconds=30000000000000000000", ""},
        Row{"wrongTypes",
            "hasCompletedOnboarding=banana\nanalyticsEnabled=\npreferences.showClickIndicators=x\n"
            "updateReminderDate=tomorrow\npreferences.clickIndicatorIntensity=strong\n"
            "preferences.cursorHighlightIntensity=true\npreferences.cursorHighlightSize=\"48,5\"\n"
            "preferences.recordingQuality=1",
            ""},
        Row{"lists",
            "hasCompletedOnboarding=true, true\npreferences.showClickIndicators=false, false\n"
            "preferences.cameraDeviceID=a, b\npreferences.cursorHighlightSize=1, 2\n"
            "preferences.recordingQuality=low, low\nupdateReminderDate=2026-03-01T10:20:30Z, x",
            ""},
        Row{"binary",
            "hasCompletedOnboarding=@ByteArray(true)\npreferences.showClickIndicators=@Invalid()\n"
            "preferences.cameraDeviceID=@Rect(1 2 3 4)\npreferences.microphoneDeviceID=@Variant(\\0\\0\\0\\x8)\n"
            "updateReminderDate=@DateTime(\\xff)",
            ""},
        Row{"notFinite",
            "preferences.clickIndicatorIntensity=nan\npreferences.cursorHighlightIntensity=inf\n"
            "preferences.cursorHighlightSize=1e999",
            ""},
        Row{"outOfBounds",
            "preferences.clickIndicatorIntensity=9\npreferences.cursorHighlightIntensity=-3\n"
            "preferences.cursorHighlightSize=200",
            "preferences.clickIndicatorIntensity=9; preferences.cursorHighlightIntensity=-3; "
            "preferences.cursorHighlightSize=200"},
        Row{"otherNumbersAreTrue", "hasCompletedOnboarding=2\npreferences.showClickIndicators=0.0",
            "hasCompletedOnboarding=1; preferences.showClickIndicators=0"},
        Row{"dateOfAnotherOffset", "updateReminderDate=2026-03-01T10:20:30+02:00",
            "updateReminderDate=2026-03-01T08:20:30.000Z"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppPreferencesTest, ReadsBackWhatItWroteInThisRunAndTheNext) {
    const QDateTime date(QDate(2026, 3, 1), QTime(10, 20, 30, 456), Qt::UTC);
    AppPreferences preferences = open();
    preferences.setValue(keys::showClickIndicators, false);
    preferences.setValue(keys::clickIndicatorIntensity, 0.1 + 0.6);
    preferences.setValue(keys::recordingQuality, RecordingQuality::medium);
    preferences.setValue(keys::cameraDeviceID, "@cam,\"é\\\n");
    preferences.setUpdateReminderDate(date);
    EXPECT_EQ(read(open()), read(preferences)) << "two of them share the file";
    // A copy is a file that this process has not seen, as the next run's is.
    ASSERT_TRUE(QFile::copy(path("current.ini"), path("next.ini")));
    const AppPreferences next(openSettings(path("next.ini")), openSettings(path("legacy.ini")), {});
    EXPECT_EQ(next.value(keys::showClickIndicators), false);
    EXPECT_EQ(next.loadClickIndicatorIntensity(), 0.1 + 0.6);
    EXPECT_EQ(next.value(keys::recordingQuality), RecordingQuality::medium);
    EXPECT_EQ(next.value(keys::cameraDeviceID), "@cam,\"é\\\n");
    EXPECT_EQ(next.updateReminderDate(), date);

    preferences.setUpdateReminderDate(std::nullopt);
    preferences.setValue(keys::cameraDeviceID, QString());
    EXPECT_FALSE(stored().contains("updateReminderDate") || stored().contains("preferences.cameraDeviceID"));
}

TEST_F(AppPreferencesTest, TheUsersOwnLieInTheConfigurationFolder) {
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
    QDir(folder.path()).mkpath("TurvexCaptureNative");
    write("TurvexCaptureNative/TurvexCaptureNative.ini", "[General]\npreferences.recordingQuality=low\n");
    AppPreferences::ofUser()->setValue(keys::analyticsEnabled, true);
    EXPECT_EQ(stored("KELDRA/KELDRA.ini"), (QMap<QString, QString>{{"analyticsEnabled", "true"},
                                                                   {"branding.migratedLegacyPreferences", "true"},
                                                                   {"preferences.recordingQuality", "low"}}));
    before.isNull() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", before);
}

/// `wanted` is what is stored afterwards, beside the mark of the migration itself.
struct MigrationRow {
    const char* name;
    const char* current;
    const char* legacy;
    const char* wanted;
    const char* mark = "true";
};

class AppPreferencesMigration : public AppPreferencesTest, public testing::WithParamInterface<MigrationRow> {};

TEST_P(AppPreferencesMigration, TakesOverWhatIsNotSet) {
    const MigrationRow& row = GetParam();
    write("current.ini", QByteArray("[General]\n") + row.current + "\n");
    if (row.legacy)
        write("legacy.ini", QByteArray("[General]\n") + row.legacy + "\n");
    const auto legacyBefore = stored("legacy.ini");

    AppPreferences preferences = open();
    preferences.migrateLegacyPreferences();
    preferences.removeLegacyKeys();
    auto values = stored();
    EXPECT_EQ(values.take("branding.migratedLegacyPreferences"), row.mark);
    QStringList words;
    for (const auto& [key, value] : values.toStdMap())
        words.append(key + "=" + value);
    EXPECT_EQ(words.join(' ').toStdString(), row.wanted);
    EXPECT_EQ(stored("legacy.ini"), legacyBefore);
    EXPECT_EQ(QFile::exists(path("legacy.ini")), row.legacy != nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AppPreferencesMigration,
    testing::Values(MigrationRow{"noLegacyDomain", "", nullptr, ""}, MigrationRow{"emptyLegacyDomain", "", "", ""},
                    MigrationRow{"whatIsSetWins", "preferences.recordingQuality=low",
                                 "preferences.recordingQuality=high\npreferences.cursorHighlightSize=60",
                                 "preferences.cursorHighlightSize=60 preferences.recordingQuality=low"},
                    MigrationRow{"whatIsSetToNonsenseWinsToo", "preferences.recordingQuality=ultra",
                                 "preferences.recordingQuality=low", "preferences.recordingQuality=ultra"},
                    MigrationRow{"nonsenseIsCopiedAsItStands", "", "preferences.countdownSeconds=banana",
                                 "preferences.countdownSeconds=banana"},
                    MigrationRow{"happensOnce", "branding.migratedLegacyPreferences=true", "analyticsEnabled=true", ""},
                    MigrationRow{"guardOfFalseStopsItToo", "branding.migratedLegacyPreferences=false",
                                 "analyticsEnabled=true", "", "false"},
                    MigrationRow{"shapeAndStrangersStay", "",
                                 "preferences.cameraOverlayShape=circle\nunknown=1\nanalyticsEnabled=true",
                                 "analyticsEnabled=true preferences.cameraOverlayShape=circle"},
                    MigrationRow{"keysOfTheEarlierName",
                                 "TurvexCaptureNative.window=1\nxTurvexCaptureNativex=2\nturvexcapturenative=3\n"
                                 "[TurvexCaptureNative]\na=4\nb=5\n[Kept]\nc=TurvexCaptureNative",
                                 nullptr, "Kept/c=TurvexCaptureNative turvexcapturenative=3"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(AppPreferencesTest, FindsTheOutputFolderThatExists) {
    const QString chosen = path("chosen, with é and %20");
    AppPreferences preferences = open();
    const auto folderNow = [&] { return preferences.loadOutputDirectory(); };
    EXPECT_EQ(folderNow(), QUrl::fromLocalFile(path("Desktop")));

    preferences.setValue(keys::outputDirectoryPath, chosen);
    EXPECT_EQ(folderNow(), QUrl::fromLocalFile(path("Desktop"))) << "not there yet";
    QDir().mkpath(chosen);
    EXPECT_EQ(folderNow(), QUrl::fromLocalFile(chosen));
    QDir().rmdir(chosen);
    write("chosen, with é and %20", "a file");
    EXPECT_EQ(folderNow(), QUrl::fromLocalFile(path("Desktop"))) << "no folder";
    EXPECT_EQ(preferences.value(keys::outputDirectoryPath), chosen) << "stays set";

    for (const QString& bad :
         {QString("."), QString(5000, 'x'), "/" + QString(5000, 'x'), QString("/tmp") + QChar(0) + "x"}) {
        preferences.setValue(keys::outputDirectoryPath, bad);
        EXPECT_EQ(folderNow(), QUrl::fromLocalFile(path("Desktop"))) << bad.toStdString();
    }
    QDir().rmdir(path("Desktop"));
    EXPECT_EQ(folderNow(), QUrl::fromLocalFile(folder.path()));
}

TEST_F(AppPreferencesTest, ACorruptFileIsStillAPlaceToWriteTo) {
    const QByteArray corruptions[] = {
        QByteArray(20000, '\0'),
        QByteArray("[General\nno value\n===\n\xff\xfe\x80=\xc3\x28\n[[[]]]\n%zz%u=1\n\"unfinished"),
        QByteArray("[General]\npreferences.recordingQuality=\"lo\\x"),
        QByteArray("[General]\n") + QByteArray(30000, '['),
        QByteArray("\x7f"
                   "ELF\x02\x01\x01",
                   7),
    };
    int number = 0;
    for (const QByteArray& corruption : corruptions) {
        const QString name = QString("corrupt%1.ini").arg(++number);
        write(name, corruption);
        AppPreferences preferences(openSettings(path(name)), openSettings(path("legacy.ini")), {});
        preferences.migrateLegacyPreferences();
        preferences.removeLegacyKeys();
        EXPECT_EQ(read(preferences), QStringList()) << name.toStdString();
        preferences.setValue(keys::recordingQuality, RecordingQuality::low);
        EXPECT_EQ(stored(name).value("preferences.recordingQuality"), "low") << name.toStdString();
    }
}

/// A list in a list in a list...: eight bytes a level.
QByteArray nestedLists(int levels) {
    return "[General]\nanalyticsEnabled=@Variant(" + QByteArray("\0\0\0\x09\0\0\0\x01", 8).repeated(levels) + ")\n";
}

TEST_F(AppPreferencesTest, WhatCannotBeOursIsSetAside) {
    write("nested.ini", nestedLists(500000));
    QDir(folder.path()).mkpath("folder.ini");
    ASSERT_TRUE(QFile::link("/dev/zero", path("endless.ini")));
    for (const QString& name : {QString("nested.ini"), QString("folder.ini"), QString("endless.ini")}) {
        const auto settings = openSettings(path(name));
        EXPECT_EQ(settings->allKeys(), QStringList()) << name.toStdString();
        settings->setValue("a", 1);
        settings->sync();
        EXPECT_EQ(settings->status(), QSettings::NoError);
        EXPECT_TRUE(QFileInfo::exists(path(name + ".damaged"))) << name.toStdString();
        EXPECT_TRUE(QFileInfo(path(name)).isFile());
    }
}

} // namespace
} // namespace keldra
