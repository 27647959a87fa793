#include "composition/EditorExporter.h"

#include "composition/Tasks.h"
#include "composition/ToldAssets.h"
#include "doubles/VirtualTime.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;
using test::ToldAssets;
using test::videoTrack;
using Status = ExportSession::Status;

/// What the test sees and sets of the job that the exporter made.
struct JobState {
    Status status = Status::unknown;
    float progress = 0;
    bool isCancelled = false;
    bool isGone = false;
    std::string path;
    bool fileWasThere = false;
    Completion<void> done;
};

class ScriptedJob final : public ExportJob {
public:
    explicit ScriptedJob(JobState& state) : m_state(state) {}
    ~ScriptedJob() override { m_state.isGone = true; }

    void start(const std::string& path, Executor&, Completion<void> done) override {
        m_state.path = path;
        m_state.fileWasThere = QFile::exists(QString::fromStdString(path));
        m_state.status = Status::waiting;
        m_state.done = std::move(done);
    }
    void cancel() override { m_state.isCancelled = true; }
    Status status() const override { return m_state.status; }
    float progress() const override { return m_state.progress; }

private:
    JobState& m_state;
};

class ExporterTest : public ::testing::Test {
protected:
    ExporterTest() {
        files.add("/a.mov", {videoTrack(0, 0, 10)});
        project.sourceURL = QUrl::fromLocalFile("/a.mov");
        project.frameRate = 30;
        project.segments.append(EditorSegment{});
        project.segments.last().duration = 2;
        path = folder.filePath("out ü.mp4");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        exporter = std::make_unique<EditorExporter>(
            EditorCompositionBuilder(files.loader(), MainTurn(time.mainQueue(), time.clock())), time.mainQueue(),
            std::shared_ptr<Scheduler>(std::shared_ptr<void>(), &time.scheduler()),
            [this](const EditorCompositionOutput&) -> std::unique_ptr<ExportJob> {
                return isAvailable ? std::make_unique<ScriptedJob>(job) : nullptr;
            });
    }

    void begin() {
        task = test::keep(exporter->exportProject(project, path, [this](double value) { reports.push_back(value); }),
                          answer);
    }
    /// Ends the job as its queue would, through main.
    void end(Status status, Result<void> result) {
        job.status = status;
        time.mainQueue().post([this, result] { job.done(result); });
        time.settle();
    }
    std::string message() const { return answer && !*answer ? answer->error().message : "no failure"; }

    QTemporaryDir folder;
    QString path;
    VirtualTime time;
    ToldAssets files{time.mainQueue()};
    EditorProject project;
    bool isAvailable = true;
    JobState job;
    std::unique_ptr<EditorExporter> exporter;
    std::vector<double> reports;
    std::optional<Result<void>> answer;
    QCoro::Task<> task;
};

TEST_F(ExporterTest, ReportsWhileItRunsAndTheWholeOnceAtTheEnd) {
    begin();
    EXPECT_TRUE(QFile::exists(path)) << "nothing is touched while the project is built";
    time.settle();
    EXPECT_EQ(job.path, QFile::encodeName(path).toStdString());
    EXPECT_FALSE(job.fileWasThere);
    EXPECT_EQ(reports, std::vector<double>{0});

    job.status = Status::exporting;
    job.progress = 0.25f;
    time.advance(119ms);
    EXPECT_EQ(reports, std::vector<double>{0});
    time.advance(1ms);
    job.progress = 1;
    time.advance(120ms);
    EXPECT_EQ(reports, (std::vector<double>{0, 0.25}));
    end(Status::completed, {});
    EXPECT_TRUE(answer && answer->has_value());
    EXPECT_EQ(reports, (std::vector<double>{0, 0.25, 1}));
    EXPECT_TRUE(job.isGone);
    time.advance(1s);
    EXPECT_EQ(reports.size(), 3u) << "polling has ended";
}

TEST_F(ExporterTest, EndsWithTheWordsOfWhatWentWrong) {
    struct Row {
        Status status;
        Result<void> result;
        std::string message;
        EditorExportError code;
    };
    const Row rows[] = {
        {Status::failed, fail(systemError(28, "out.mp4")), "out.mp4: No space left on device",
         EditorExportError::failed},
        {Status::failed, fail(Error{}), "The MP4 export could not be completed.", EditorExportError::failed},
        {Status::failed, {}, "The MP4 export could not be completed.", EditorExportError::failed},
        {Status::cancelled, fail(Error{}), "Export cancelled.", EditorExportError::cancelled},
    };
    for (const Row& row : rows) {
        answer.reset();
        reports.clear();
        begin();
        time.settle();
        end(row.status, row.result);
        EXPECT_EQ(message(), row.message);
        EXPECT_EQ(answer->error(), makeError(row.code, row.message));
        EXPECT_EQ(reports, std::vector<double>{0});
    }
}

TEST_F(ExporterTest, ACancelDuringTheBuildEndsTheExportAndKeepsTheOldFile) {
    begin();
    exporter->cancel();
    time.settle();
    EXPECT_EQ(message(), "Export cancelled.");
    EXPECT_TRUE(job.path.empty());
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(ExporterTest, AnExporterThatGoesCancelsAndFallsSilent) {
    begin();
    time.settle();
    exporter.reset();
    EXPECT_TRUE(job.isCancelled);
    job.progress = 0.5f;
    time.advance(1s);
    end(Status::cancelled, fail(Error{}));
    EXPECT_EQ(reports, std::vector<double>{0});
    EXPECT_EQ(message(), "Export cancelled.");
}

} // namespace
} // namespace keldra
