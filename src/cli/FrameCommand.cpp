#include "cli/FrameCommand.h"

#include "async/CoTry.h"
#include "cli/InputProject.h"
#include "cli/OutputFiles.h"
#include "composition/EditorCompositionBuilder.h"
#include "media/FrameGenerator.h"

#include <QBuffer>
#include <QImage>

namespace keldra {
namespace {

struct FrameArguments {
    QString input;
    double seconds = 0;
    QString output;
};

Result<FrameArguments> parseFrameArguments(const QStringList& words) {
    TRY_LET(const Arguments arguments,
            parseArguments(words, {{"--at", OptionValue::required}, {"--output", OptionValue::required}}));
    if (arguments.positional.size() != 1)
        return fail(usageError(QStringLiteral("frame needs one movie or project file")));
    if (!arguments.has("--at") || !arguments.has("--output"))
        return fail(usageError(QStringLiteral("frame needs --at SECONDS and --output F.png")));
    TRY_LET(const double seconds, parseNumber("--at", *arguments.value("--at")));
    if (seconds < 0)
        return fail(usageError(QStringLiteral("--at must not be negative")));
    return FrameArguments{arguments.positional.first(), seconds, *arguments.value("--output")};
}

Result<QByteArray> pngOf(const PixelBuffer& frame) {
    const QImage image(frame.data(), frame.width(), frame.height(), frame.strideBytes(), QImage::Format_RGB32);
    QBuffer buffer;
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        return fail(Error{"Frame", 1, "the frame could not be made a PNG", {}});
    return buffer.data();
}

} // namespace

QCoro::Task<Result<void>> runFrame(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const FrameArguments arguments, parseFrameArguments(words));
    InputProject input(context);
    CO_TRY_LET(const EditorProject project, co_await input.load(arguments.input));
    CO_TRY(checkNotAnInput(arguments.output, arguments.input, project));
    CO_TRY_LET(const EditorCompositionOutput output, co_await input.build(project));
    const double end = output.composition->duration().seconds();
    if (!(end > 0))
        co_return fail(Error{"Frame", 1, arguments.input.toStdString() + ": the timeline is empty", {}});
    if (arguments.seconds >= end)
        co_return fail(Error{"Frame",
                             1,
                             QStringLiteral("%1: --at %2 is past the end, which is at %3 seconds")
                                 .arg(arguments.input)
                                 .arg(arguments.seconds)
                                 .arg(end)
                                 .toStdString(),
                             {}});
    if (!output.videoComposition)
        co_return fail(Error{"Frame", 1, arguments.input.toStdString() + ": there is no picture in it", {}});

    // Nothing else waits for the main thread here, so the frame may be composed on it.
    FrameGenerator generator(output.composition, *output.videoComposition);
    CO_TRY_LET(const PixelBuffer frame, generator.frameAt(MediaTime::fromSeconds(arguments.seconds, 60000)));
    CO_TRY_LET(const QByteArray png, pngOf(frame));
    co_return writeFile(arguments.output, png);
}

} // namespace keldra
