#include "launch/AgentRequest.h"

#include "platform/x11/X11ScaleFactor.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {
namespace {

TEST(AgentRequestTest, IsReadFromTheWords) {
    QTemporaryDir folder;
    for (const char* name : {"a movie.mov", "record", "100%.mov"}) {
        QFile file(folder.filePath(QString::fromUtf8(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const auto movie = [&](const char* name) {
        return AgentRequest{QUrl::fromLocalFile(folder.filePath(QString::fromUtf8(name))), false};
    };
    const struct {
        QStringList words;
        std::optional<AgentRequest> wanted;
    } rows[] = {
        {{}, AgentRequest{}},
        {{"--open"}, AgentRequest{{}, true}},
        {{"a movie.mov"}, movie("a movie.mov")},
        {{folder.filePath("a movie.mov")}, movie("a movie.mov")},
        {{QUrl::fromLocalFile(folder.filePath("a movie.mov")).toString(QUrl::FullyEncoded)}, movie("a movie.mov")},
        {{"100%.mov"}, movie("100%.mov")},
        {{"./record"}, movie("record")},
        {{"record"}, {}},
        {{"sources", "--json"}, {}},
        {{"--help"}, {}},
        {{"--open", "a movie.mov"}, {}},
        {{"missing.mov"}, {}},
        {{"."}, {}},
        {{""}, {}},
        {{"https://example.org/a.mov"}, {}},
    };
    for (const auto& [words, wanted] : rows)
        EXPECT_EQ(readAgentRequest(words, folder.path()), wanted) << words.join('|').toStdString();
}

TEST(ScaleFactorTest, FollowsTheUserThenTheResourcesThenNobody) {
    const struct {
        const char* qtScaleFactor;
        const char* resources;
        double wanted;
    } rows[] = {
        {"", "", 1},
        {"", "Xft.dpi:\t144\n", 1.5},
        {"", "Xcursor.size:\t24\nXft.antialias:\t1\nXft.dpi:\t120\nXft.hinting:\t1\n", 1.25},
        {"", "Xft.dpi: 192", 2},
        {"2", "Xft.dpi:\t144\n", 2},
        {"1.25", "", 1.25},
        {"much", "Xft.dpi:\t144\n", 1.5},
        {"0", "Xft.dpi:\t-96\n", 1},
        {"-1", "Xft.dpi:\tnan\n", 1},
        {"inf", "Xft.dpi:\t9600\n", 1},
        {"", "MyXft.dpi:\t144\nXft.dpiX:\t192\n", 1},
        {"", "Xft.dpi", 1},
    };
    for (const auto& [qtScaleFactor, resources, wanted] : rows)
        EXPECT_EQ(scaleFactor(qtScaleFactor, resources), wanted) << qtScaleFactor << " " << resources;
}

} // namespace
} // namespace keldra
