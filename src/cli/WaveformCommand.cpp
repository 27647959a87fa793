#include "cli/WaveformCommand.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "audio/EditorWaveformGenerator.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "media/Asset.h"

#include <QFile>

#include <cmath>
#include <optional>

namespace keldra {
namespace {

constexpr int mostBuckets = 1'000'000;

struct WaveformArguments {
    QString input;
    std::optional<int> bucketCount;
};

Result<WaveformArguments> parseWaveformArguments(const QStringList& words) {
    TRY_LET(const Arguments arguments, parseArguments(words, {{"--buckets", OptionValue::required}}));
    if (arguments.positional.size() != 1)
        return fail(usageError(QStringLiteral("waveform needs one file")));
    WaveformArguments parsed{arguments.positional.first(), std::nullopt};
    if (const auto buckets = arguments.value("--buckets")) {
        TRY_LET(const double count, parseNumber("--buckets", *buckets));
        if (count < 1 || count > mostBuckets || count != std::floor(count))
            return fail(usageError(QStringLiteral("--buckets needs a whole number from 1 to %1, not \"%2\"")
                                       .arg(mostBuckets)
                                       .arg(*buckets)));
        parsed.bucketCount = int(count);
    }
    return parsed;
}

QByteArray jsonOf(const EditorWaveform& waveform) {
    QByteArray json = R"({"duration":)" + QByteArray::number(waveform.duration, 'g', 9) + R"(,"samples":[)";
    for (std::size_t i = 0; i < waveform.samples.size(); ++i)
        json += (i > 0 ? "," : "") + QByteArray::number(double(waveform.samples[i]), 'g', 5);
    return json + "]}\n";
}

} // namespace

QCoro::Task<Result<void>> runWaveform(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const WaveformArguments arguments, parseWaveformArguments(words));
    const std::string path = QFile::encodeName(arguments.input).toStdString();
    // Nothing else waits for the main thread here, so the file may be looked at on it.
    CO_TRY_LET(const AssetPtr asset, Asset::open(path));
    EditorWaveformGenerator generator;
    const auto waveform = co_await awaitCompletion<EditorWaveform>([&](Completion<EditorWaveform> done) {
        generator.generate(path, arguments.bucketCount, asset->duration().seconds(), context.mainQueue,
                           std::move(done));
    });
    if (!waveform)
        co_return fail(waveform.error());
    if (!writeResult(jsonOf(*waveform)))
        co_return fail(unwritableOutput());
    co_return {};
}

} // namespace keldra
