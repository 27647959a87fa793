#include "cli/ExportCommand.h"

#include "async/CoTry.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "cli/InputProject.h"
#include "cli/StopSignals.h"
#include "composition/EditorExporter.h"
#include "project/ProjectJson.h"

#include <QFileInfo>

namespace keldra {
namespace {

struct ExportArguments {
    QString input;
    QString output;
    std::optional<QString> canvas;
    EncoderChoice encoder = EncoderChoice::x264;
    bool isQuiet = false;
};

Result<ExportArguments> parseExportArguments(const QStringList& words) {
    TRY_LET(const Arguments arguments, parseArguments(words, {{"--output", OptionValue::required},
                                                              {"--canvas", OptionValue::required},
                                                              {"--encoder", OptionValue::required},
                                                              {"--quiet", OptionValue::none}}));
    if (arguments.positional.size() != 1)
        return fail(usageError(QStringLiteral("export needs one movie or project file")));
    if (!arguments.has("--output"))
        return fail(usageError(QStringLiteral("export needs --output F.mp4")));
    const QString encoderName = arguments.value("--encoder").value_or(QStringLiteral("x264"));
    const auto encoder = encoderChoice(encoderName.toStdString());
    if (!encoder)
        return fail(usageError(QStringLiteral("--encoder is one of auto, x264, vaapi, nvenc, qsv")));
    return ExportArguments{arguments.positional.first(), *arguments.value("--output"), arguments.value("--canvas"),
                           *encoder, arguments.has("--quiet")};
}

Result<CanvasStyle> readStyle(const QString& path) {
    TRY_LET(const QByteArray json, readFile(path));
    return decodeCanvasStyle(json).map_error([&](Error error) {
        error.message = path.toStdString() + ": " + error.message;
        return error;
    });
}

} // namespace

QCoro::Task<Result<void>> runExport(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const ExportArguments arguments, parseExportArguments(words));
    InputProject input(context);
    CO_TRY_LET(EditorProject project, co_await input.load(arguments.input));
    if (arguments.canvas) {
        CO_TRY_LET(project.canvas, readStyle(*arguments.canvas));
    }
    CO_TRY(checkNotAnInput(arguments.output, arguments.input, project));

    EditorCompositionBuilder builder(input.assetLoader(), MainTurn(context.mainQueue, context.clock));
    EditorExporter exporter(std::move(builder), context.mainQueue, context.scheduler,
                            exportSessionJobs(arguments.encoder));
    bool isInterrupted = false;
    const StopSignals signals([&] {
        isInterrupted = true;
        exporter.cancel();
    });
    ProgressDisplay display(arguments.isQuiet);
    const Result<void> exported = co_await exporter.exportProject(
        project, QFileInfo(arguments.output).absoluteFilePath(), [&](double progress) { display.show(progress); });
    if (!exported && isInterrupted)
        co_return fail(interruptedError());
    co_return exported;
}

} // namespace keldra
