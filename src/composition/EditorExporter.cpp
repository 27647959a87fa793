#include "composition/EditorExporter.h"

#include "async/AwaitCompletion.h"

#include <QFile>

namespace keldra {
namespace {

constexpr std::chrono::milliseconds pollPeriod(120);

class SessionJob final : public ExportJob {
public:
    SessionJob(const EditorCompositionOutput& output, EncoderChoice encoder)
        : m_session(output.composition, output.videoComposition, output.audioMix) {
        m_session.setEncoder(encoder);
    }

    void start(const std::string& path, Executor& answer, Completion<void> done) override {
        m_session.start(path, answer, std::move(done));
    }
    void cancel() override { m_session.cancel(); }
    ExportSession::Status status() const override { return m_session.status(); }
    float progress() const override { return m_session.progress(); }

private:
    ExportSession m_session;
};

bool isUnderWay(ExportSession::Status status) {
    return status == ExportSession::Status::waiting || status == ExportSession::Status::exporting;
}

Result<void> outcome(ExportSession::Status status, const Result<void>& answer) {
    if (status == ExportSession::Status::completed)
        return {};
    if (status == ExportSession::Status::cancelled)
        return fail(makeError(EditorExportError::cancelled));
    const bool hasWords = !answer && !answer.error().message.empty();
    return fail(makeError(EditorExportError::failed,
                          hasWords ? answer.error().message : "The MP4 export could not be completed."));
}

} // namespace

Error makeError(EditorExportError code, const std::string& text) {
    const auto words = [&]() -> std::string {
        switch (code) {
        case EditorExportError::failed:
            return text;
        case EditorExportError::unavailable:
            return "KELDRA could not create an MP4 exporter for this recording.";
        case EditorExportError::cancelled:
            return "Export cancelled.";
        }
        return {};
    };
    return {"EditorExportError", int(code), words(), {}};
}

ExportJobMaker exportSessionJobs(EncoderChoice encoder) {
    return [encoder](const EditorCompositionOutput& output) -> std::unique_ptr<ExportJob> {
        if (output.composition->duration() <= MediaTime::zero())
            return nullptr;
        return std::make_unique<SessionJob>(output, encoder);
    };
}

/// One export. The task holds it, so it may outlive the exporter.
struct EditorExporter::Run {
    QString outputPath;
    ProgressCallback progress;
    std::unique_ptr<ExportJob> job;
    bool isCancelled = false;

    void cancel() {
        isCancelled = true;
        if (job)
            job->cancel();
    }
    void report(double value) const {
        if (progress)
            progress(value);
    }
    void poll() const {
        // The whole is reported by the end of the export alone.
        if (isUnderWay(job->status()) && job->progress() < 1)
            report(job->progress());
    }
};

EditorExporter::EditorExporter(EditorCompositionBuilder builder, Executor& main, std::shared_ptr<Scheduler> scheduler,
                               ExportJobMaker makeJob)
    : m_builder(std::move(builder)), m_main(main), m_scheduler(std::move(scheduler)), m_makeJob(std::move(makeJob)) {}

EditorExporter::~EditorExporter() {
    if (const auto run = m_run.lock())
        run->progress = nullptr;
    cancel();
}

void EditorExporter::cancel() {
    if (const auto run = m_run.lock())
        run->cancel();
}

QCoro::Task<Result<void>> EditorExporter::exportProject(EditorProject project, QString outputPath,
                                                        ProgressCallback progress) {
    const auto run = std::make_shared<Run>();
    run->outputPath = std::move(outputPath);
    run->progress = std::move(progress);
    m_run = run;
    // Whatever is needed after a wait is taken along: the exporter may be gone by then.
    Executor& main = m_main;
    const std::shared_ptr<Scheduler> scheduler = m_scheduler;
    const ExportJobMaker makeJob = m_makeJob;

    const auto output = co_await m_builder.build(std::move(project));
    if (run->isCancelled)
        co_return fail(makeError(EditorExportError::cancelled));
    if (!output)
        co_return fail(output.error());
    run->job = makeJob(*output);
    if (!run->job)
        co_return fail(makeError(EditorExportError::unavailable));

    // Usually no file is there; one that cannot be removed fails the export's own write.
    QFile::remove(run->outputPath);
    Timer polling;
    const Result<void> answer = co_await awaitCompletion<void>([&](Completion<void> done) {
        run->job->start(QFile::encodeName(run->outputPath).toStdString(), main, std::move(done));
        run->poll();
        polling = scheduler->every(pollPeriod, [run] { run->poll(); });
    });
    polling.cancel();
    const Result<void> result = outcome(run->job->status(), answer);
    run->job.reset();
    if (result)
        run->report(1);
    co_return result;
}

} // namespace keldra
