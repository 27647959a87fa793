#include "cli/CommandLine.h"

#include "cli/Arguments.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "cli/ExportCommand.h"
#include "cli/FrameCommand.h"
#include "cli/LoudnessCommand.h"
#include "cli/ProjectCommand.h"
#include "cli/RecordCommand.h"
#include "cli/SourcesCommand.h"
#include "cli/TelemetryCommand.h"
#include "cli/WaveformCommand.h"

#include <QCoreApplication>

namespace keldra {
namespace {

struct Command {
    const char* name;
    const char* usage;
    QCoro::Task<Result<void>> (*run)(const CommandContext&, QStringList);
};

constexpr Command commands[] = {
    {"sources", R"(keldra sources [--json]
        displays and windows that can be recorded, cameras and microphones
)",
     runSources},
    {"record", R"(keldra record (--display N | --window ID | --area X,Y,W,H)
       [--seconds S] [--quality high|medium|low] [--clicks] [--click-sound soft|classic] [--highlight]
       [--output-dir DIR]
        records until S seconds after the first frame, or until Ctrl-C, and prints the file's path.
        X,Y count pixels from the top left of the desktop. A device is named by its id
        or its name; without one the desktop's choice is taken. Without --output-dir the file goes to
        the current folder.
)",
     runRecord},
    {"project", R"(keldra project INPUT
        the project that the editor would open for a movie or a project file, as JSON
)",
     runProject},
    {"frame", R"(keldra frame INPUT --at SECONDS --output F.png
        one composed frame of a movie or project
)",
     runFrame},
    {"export", R"(keldra export INPUT --output F.mp4 [--canvas STYLE.json] [--quiet]
       [--encoder auto|x264|vaapi|nvenc|qsv]
        the finished movie of a movie or project
)",
     runExport},
    {"loudness", R"(keldra loudness FILE [--start S] [--duration D]
        peak, RMS and the gain that would even it out, as JSON; of the first sound track
)",
     runLoudness},
    {"waveform", R"(keldra waveform FILE [--buckets N]
        the heights of the sound over time, from 0 (-54 dB) to 1 (full scale), as JSON
)",
     runWaveform},
    {"telemetry", R"(keldra telemetry --show
        what one of each usage event would send; nothing is sent
)",
     runTelemetry},
};

const Command* findCommand(const QString& name) {
    for (const Command& command : commands)
        if (name == QLatin1String(command.name))
            return &command;
    return nullptr;
}

QByteArray help() {
    QByteArray text = R"(KELDRA records the screen and turns movies into polished MP4 files.

keldra [FILE | --open]
        the recorder on the desktop; with a movie to edit, or the dialog that picks one
)";
    for (const Command& command : commands)
        text += command.usage;
    return text +
           "keldra --version | --help\n\n"
           "INPUT is a movie or a project JSON. Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.\n";
}

Result<void> printed(const QByteArray& text) {
    if (!writeResult(text))
        return fail(unwritableOutput());
    return {};
}

QCoro::Task<Result<void>> run(const CommandContext& context, QStringList words) {
    const QString name = words.value(0);
    if (name == u"--help")
        co_return printed(help());
    if (name == u"--version")
        co_return printed("keldra " + QCoreApplication::applicationVersion().toUtf8() + '\n');
    const Command* command = findCommand(name);
    if (!command)
        co_return fail(usageError(QStringLiteral("there is no command \"%1\", nor such a file").arg(name)));
    if (words.contains(QStringLiteral("--help")))
        co_return printed(command->usage);
    co_return co_await command->run(context, words.mid(1));
}

} // namespace

bool isCommandLine(const QStringList& words) {
    return words.value(0) == u"--help" || words.value(0) == u"--version" || findCommand(words.value(0));
}

QCoro::Task<int> runCommandLine(const CommandContext& context, QStringList words) {
    const Result<void> result = co_await run(context, words);
    if (result)
        co_return 0;
    QString line = QString::fromStdString(result.error().message).replace(u'\n', u' ');
    if (isUsageError(result.error()))
        line += QStringLiteral("; see keldra --help");
    writeNotice(QStringLiteral("keldra: ") + line);
    co_return exitStatus(result.error());
}

} // namespace keldra
