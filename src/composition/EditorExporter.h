#pragma once

#include "async/Scheduler.h"
#include "base/Executor.h"
#include "composition/EditorCompositionBuilder.h"
#include "media/ExportSession.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <memory>

namespace keldra {

enum class EditorExportError { failed = 1, unavailable, cancelled };

/// The error with its words; `text` is the words of a failed export.
Error makeError(EditorExportError code, const std::string& text = {});

/// The whole-file render as the exporter knows it; see ExportSession for what the operations promise.
class ExportJob {
public:
    virtual ~ExportJob() = default;
    virtual void start(const std::string& path, Executor& answer, Completion<void> done) = 0;
    virtual void cancel() = 0;
    virtual ExportSession::Status status() const = 0;
    virtual float progress() const = 0;
};

/// Makes the job for a built project; null when it cannot be exported.
using ExportJobMaker = std::function<std::unique_ptr<ExportJob>(const EditorCompositionOutput& output)>;
/// Jobs over ExportSession.
ExportJobMaker exportSessionJobs(EncoderChoice encoder = EncoderChoice::x264);

/// Writes a project into one MP4 file. It builds for itself, so a preview that is an edit behind cannot leak in. One
/// export at a time.
///
/// Threads: main. Destroying it cancels the export under way, whose task then still ends.
class EditorExporter {
public:
    /// From 0 to 1, on main.
    using ProgressCallback = std::function<void(double)>;

    EditorExporter(EditorCompositionBuilder builder, Executor& main, std::shared_ptr<Scheduler> scheduler,
                   ExportJobMaker makeJob = exportSessionJobs());
    ~EditorExporter();

    /// Writes to `outputPath`; a file there is removed as soon as the export can start, whatever comes of it. A
    /// completed export reports 1 exactly once, at its end.
    /// Errors: EditorExportError; those of the build, unchanged.
    QCoro::Task<Result<void>> exportProject(EditorProject project, QString outputPath, ProgressCallback progress);

    /// Ends the export under way, if any, with EditorExportError::cancelled. While the project is still being built no
    /// file is touched.
    void cancel();

private:
    struct Run;

    EditorCompositionBuilder m_builder;
    Executor& m_main;
    std::shared_ptr<Scheduler> m_scheduler;
    ExportJobMaker m_makeJob;
    std::weak_ptr<Run> m_run;
};

} // namespace keldra
