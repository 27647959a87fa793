#include "platform/qt/QtApplication.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/utsname.h>

namespace keldra {
namespace {

TEST(QtApplication, NamesTheModelAsTheFirmwareDoes) {
    const QTemporaryDir folder;
    const std::pair<QByteArray, QString> rows[] = {
        {"ThinkPad X1\n", "ThinkPad X1"},
        {"  Standard PC (Q35 + ICH9, 2009) \n", "Standard PC (Q35 + ICH9, 2009)"},
        {"two\nlines\t", "two lines"},
        {"\n", "machine"},
        {"", "machine"},
        {QByteArray(10'000, 'x'), QString(256, 'x')},
    };
    for (const auto& [content, name] : rows) {
        QFile file(folder.filePath("product_name"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        EXPECT_EQ(deviceModel(file.fileName(), "machine"), name);
    }
    EXPECT_EQ(deviceModel(folder.filePath("none"), "machine"), "machine");
    EXPECT_EQ(deviceModel(folder.path(), "machine"), "machine");
}

TEST(QtApplication, TellsTheTruthAboutThisMachine) {
    const QtApplication application("1.2", "34");
    const ApplicationFacts facts = application.facts();
    EXPECT_EQ(facts.version, "1.2");
    EXPECT_EQ(facts.build, "34");
    EXPECT_EQ(facts.osName, "Linux");
    EXPECT_EQ(facts.osVersion, QSettings("/etc/os-release", QSettings::IniFormat).value("VERSION_ID").toString());
    utsname names{};
    uname(&names);
    EXPECT_EQ(facts.deviceModel, deviceModel("/sys/class/dmi/id/product_name", names.machine));
}

} // namespace
} // namespace keldra
