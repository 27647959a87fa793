#include "project/EditorProjectStore.h"

#include "doubles/RandomProject.h"
#include "project/ProjectJson.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <future>
#include <gtest/gtest.h>
#include <sys/mount.h>

namespace keldra {
namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

class EditorProjectStoreTest : public testing::Test {
protected:
    EditorProjectStoreTest() { project.updatedAt = QDateTime::fromSecsSinceEpoch(1'000'000, Qt::UTC); }

    std::optional<EditorProject> find(const QUrl& url) { return *findRecoveredProject(url, directory); }
    QStringList files() const { return QDir(directory).entryList(QDir::Files | QDir::Hidden); }

    QTemporaryDir folder;
    const QString directory = folder.filePath("KELDRA/EditorRecovery");
    EditorProject project = RandomProject(7).make(5);
};

TEST_F(EditorProjectStoreTest, FindsWhatItSavedUnderTheProjectsName) {
    EXPECT_FALSE(find(project.sourceURL));
    EXPECT_FALSE(QDir(directory).exists()) << "looking creates nothing";
    ASSERT_TRUE(saveProject(project, directory));
    ASSERT_TRUE(saveProject(project, directory));
    EXPECT_EQ(files(), QStringList(project.id.toString(QUuid::WithoutBraces).toUpper() + ".keldra-project.json"));
    EXPECT_EQ(find(project.sourceURL), project);
    EXPECT_FALSE(find(QUrl::fromLocalFile("/movies/other.mov")));
}

TEST_F(EditorProjectStoreTest, MatchesSpellingsOfOneSource) {
    project.sourceURL = QUrl::fromLocalFile("/movies/a b \u00e9/source.mov");
    ASSERT_TRUE(saveProject(project, directory));
    for (const char* path :
         {"/movies/a b \u00e9/source.mov", "/movies/./a b \u00e9//source.mov", "/movies/x/../a b \u00e9/source.mov"})
        EXPECT_TRUE(find(QUrl::fromLocalFile(QString::fromUtf8(path)))) << path;
    EXPECT_TRUE(find(QUrl("file:///movies/a%20b%20%C3%A9/source.mov")));
    EXPECT_FALSE(find(QUrl::fromLocalFile("/movies/source.mov")));
}

TEST_F(EditorProjectStoreTest, MatchesAFileThatSpellsItsTextWithEscapes) {
    QByteArray json = *encodeProject(project);
    json.replace("file:///movies", "file:\\/\\/\\/movies");
    ASSERT_TRUE(QDir().mkpath(directory));
    writeFile(directory + "/a.json", json);
    EXPECT_TRUE(find(project.sourceURL));
    json.replace("\"sourceURL\"", "\"source\\u0055RL\"");
    writeFile(directory + "/a.json", json);
    EXPECT_TRUE(find(project.sourceURL));
}

TEST_F(EditorProjectStoreTest, TheNewestWinsAndBadNeighboursArePassedOver) {
    ASSERT_TRUE(saveProject(project, directory));
    EditorProject newer = project;
    newer.id = QUuid::createUuid();
    newer.updatedAt = project.updatedAt.addSecs(1);
    ASSERT_TRUE(saveProject(newer, directory));
    EditorProject newest = newer;
    newest.updatedAt = newer.updatedAt.addSecs(1);
    writeFile(directory + "/notes.txt", *encodeProject(newest));
    writeFile(directory + "/.hidden.json", *encodeProject(newest));
    writeFile(directory + "/bad.json", "{\"sourceURL\":\"" + project.sourceURL.toEncoded() + "\"");
    writeFile(directory + "/empty.json", "");
    ASSERT_TRUE(QDir(directory).mkdir("folder.json"));
    EXPECT_EQ(find(project.sourceURL), newer);
}

TEST_F(EditorProjectStoreTest, AProjectThatCannotBeWrittenLeavesTheOldFile) {
    ASSERT_TRUE(saveProject(project, directory));
    EditorProject broken = project;
    broken.frameRate = std::numeric_limits<double>::infinity();
    const auto saved = saveProject(broken, directory);
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().message, "frameRate: the number is not finite");
    EXPECT_EQ(find(project.sourceURL), project);
    EXPECT_EQ(files().size(), 1);
}

TEST_F(EditorProjectStoreTest, AFullDiskIsReportedAndLeavesTheOldFile) {
    ASSERT_TRUE(QDir().mkpath(directory));
    const QByteArray disk = directory.toLocal8Bit();
    if (mount("tmpfs", disk.constData(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "mounting a small disk needs root";
    ASSERT_TRUE(saveProject(project, directory));
    EditorProject large = RandomProject(8).make(2000);
    large.id = project.id;
    const auto saved = saveProject(large, directory);
    ASSERT_FALSE(saved);
    EXPECT_NE(saved.error().message.find("No space left on device"), std::string::npos) << saved.error().message;
    EXPECT_EQ(find(project.sourceURL), project);
    EXPECT_EQ(files().size(), 1) << "no temporary file stays";
    umount(disk.constData());
}

TEST_F(EditorProjectStoreTest, AFolderThatIsNoneIsAnError) {
    ASSERT_TRUE(QDir().mkpath(folder.filePath("KELDRA")));
    writeFile(directory, "a file");
    EXPECT_FALSE(findRecoveredProject(project.sourceURL, directory));
    EXPECT_FALSE(saveProject(project, directory));
}

TEST_F(EditorProjectStoreTest, SavesAndLoadsInOrderOnItsOwnQueue) {
    SerialQueue answers("test.answers");
    EditorProjectStore store(directory);
    std::promise<std::optional<EditorProject>> found;
    for (int i = 0; i < 20; ++i) {
        project.updatedAt = project.updatedAt.addSecs(1);
        store.save(project, answers, [](const Result<void>& saved) { EXPECT_TRUE(saved); });
    }
    store.loadRecoveredProject(project.sourceURL, answers,
                               [&](Result<std::optional<EditorProject>> result) { found.set_value(*result); });
    EXPECT_EQ(found.get_future().get(), project);
}

TEST(RecoveryDirectory, FollowsTheDataHome) {
    qputenv("KELDRA_DATA_HOME", "/data");
    EXPECT_EQ(defaultRecoveryDirectory(), "/data/KELDRA/EditorRecovery");
    qunsetenv("KELDRA_DATA_HOME");
    qputenv("XDG_DATA_HOME", "/share");
    EXPECT_EQ(defaultRecoveryDirectory(), "/share/KELDRA/EditorRecovery");
    qunsetenv("XDG_DATA_HOME");
}

} // namespace
} // namespace keldra
