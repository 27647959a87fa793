#include "cli/LoudnessCommand.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "audio/AudioLevelAnalyzer.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"

#include <QFile>

namespace keldra {
namespace {

struct LoudnessArguments {
    QString input;
    double start = 0;
    /// 0 for the whole track.
    double duration = 0;
};

Result<LoudnessArguments> parseLoudnessArguments(const QStringList& words) {
    TRY_LET(const Arguments arguments,
            parseArguments(words, {{"--start", OptionValue::required}, {"--duration", OptionValue::required}}));
    if (arguments.positional.size() != 1)
        return fail(usageError(QStringLiteral("loudness needs one file")));
    LoudnessArguments parsed{arguments.positional.first()};
    if (const auto start = arguments.value("--start")) {
        TRY_LET(parsed.start, parseNumber("--start", *start));
        if (parsed.start < 0)
            return fail(usageError(QStringLiteral("--start must not be negative")));
    }
    if (const auto duration = arguments.value("--duration")) {
        TRY_LET(parsed.duration, parseNumber("--duration", *duration));
        if (parsed.duration <= 0)
            return fail(usageError(QStringLiteral("--duration must be more than 0")));
    } else if (parsed.start > 0) {
        // Without an end the analyzer takes the whole track; this is to its end.
        parsed.duration = 1e9;
    }
    return parsed;
}

Error wordedFor(const QString& input, Error error) {
    if (error == makeError(AnalyzerError::noAudioTrack))
        error.message = input.toStdString() + ": there is no sound in it";
    else if (error == makeError(AnalyzerError::couldNotReadAudio))
        error.message = input.toStdString() + ": its sound cannot be read";
    return error;
}

QByteArray jsonOf(const AudioLevels& levels) {
    const auto gain = AudioLevelAnalyzer::normalizationGain(levels.peak, levels.rms);
    const auto number = [](double value) { return QByteArray::number(value, 'g', 9); };
    return R"({"peak":)" + number(levels.peak) + R"(,"rms":)" + number(levels.rms) + R"(,"gain":)" +
           (gain ? number(*gain) : QByteArray("null")) + "}\n";
}

} // namespace

QCoro::Task<Result<void>> runLoudness(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const LoudnessArguments arguments, parseLoudnessArguments(words));
    AudioLevelAnalyzer analyzer;
    const std::string path = QFile::encodeName(arguments.input).toStdString();
    const auto levels = co_await awaitCompletion<AudioLevels>([&](Completion<AudioLevels> done) {
        analyzer.measure(path, arguments.start, arguments.duration, context.mainQueue, std::move(done));
    });
    if (!levels)
        co_return fail(wordedFor(arguments.input, levels.error()));
    if (!writeResult(jsonOf(*levels)))
        co_return fail(unwritableOutput());
    co_return {};
}

} // namespace keldra
