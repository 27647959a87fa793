#include "services/UpdateCheck.h"

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(Version, ComparesNumbersNotTexts) {
    const QString thousand = QString(QStringLiteral("1.")).repeated(1000);
    struct Row {
        QString remote;
        QString local;
        bool isNewer;
    };
    const Row rows[] = {
        {"1.10", "1.9", true},
        {"2.0", "10.0", false},
        {"1.2", "1.2.0", false},
        {"1.2.0.1", "1.2", true},
        {"1..2.", "1.1", true},
        {"1.2b.3", "1.2.9", true}, // reads 1, 3
        {"v2.0", "1", false},      // reads 0
        {" 3", "2", false},
        {"", "0.1", false},
        {"1", "", true},
        {"99999999999999999999", "1", false}, // no number of ours
        {"9223372036854775807", "9223372036854775806", true},
        {thousand + "2", thousand + "1", true},
        {thousand, thousand + "0", false},
        {"٣", "2", false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(isVersionNewer(row.remote, row.local), row.isNewer)
            << row.remote.left(40).toStdString() << " against " << row.local.left(40).toStdString();
}

TEST(UpdateManifest, IsAnObjectWithBothMembers) {
    EXPECT_EQ(decodeUpdateManifest(R"({"downloadURL":"https://example.org/get?a=1","version":"1.2","more":[1]})"),
              (UpdateManifest{"1.2", QUrl("https://example.org/get?a=1")}));
    const QByteArray deep = QByteArray(100'000, '[') + QByteArray(100'000, ']');
    const QByteArray rows[] = {
        "",
        "null",
        R"({"version":"9"})",
        R"({"downloadURL":"https://example.org"})",
        R"({"version":9,"downloadURL":"https://example.org"})",
        R"({"version":"9","downloadURL":{}})",
        R"({"version":"9","downloadURL":"get.html"})",
        R"({"version":"9","downloadURL":"file:///etc/passwd"})",
        R"({"version":"9","downloadURL":"https://"})",
        R"({"version":"9","downloadURL":"https://example.org")",
        R"([{"version":"9","downloadURL":"https://example.org"}])",
        deep,
        R"({"version":)" + deep + R"(,"downloadURL":"https://example.org"})",
        QByteArray("\xff\xfe\x00{", 4),
    };
    for (const QByteArray& row : rows)
        EXPECT_EQ(decodeUpdateManifest(row), std::nullopt) << row.left(80).toStdString();
}

} // namespace
} // namespace keldra
