#include "cli/RecordCommand.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "base/Log.h"
#include "base/SerialQueue.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "cli/RecordArguments.h"
#include "cli/StopSignals.h"
#include "media/FileMovieWriter.h"
#include "recording/CapturePath.h"
#include "recording/ScreenRecorder.h"

#include <QDateTime>

namespace keldra {
namespace {

using namespace std::chrono_literals;

/// Nothing when nothing is asked for: a pointer that nobody follows costs nothing.
std::shared_ptr<PointerEffectsMonitor> makePointerEffects(const CommandContext& context, const Platform& platform,
                                                          const RecordArguments& arguments) {
    if (!arguments.showsClicks && !arguments.clickSound && !arguments.showsHighlight)
        return nullptr;
    auto monitor = std::make_shared<PointerEffectsMonitor>(platform.pointer, platform.ownWindows, platform.clock,
                                                           *context.scheduler);
    PointerEffectsSettings settings;
    settings.showsClickIndicators = arguments.showsClicks;
    settings.clickSoundEnabled = arguments.clickSound.has_value();
    settings.showsCursorHighlight = arguments.showsHighlight;
    monitor->updateSettings(settings);
    return monitor;
}

/// Ripples and lights are windows of ours where the display is recorded as it is, and this command has none.
Result<void> checkEffects(const Platform& platform, const RecordArguments& arguments) {
    const bool isAsked = arguments.showsClicks || arguments.showsHighlight;
    if (isAsked && capturePathOf(platform) == CapturePath::display)
        return fail(Error{"Record",
                          2,
                          "--clicks and --highlight cannot be recorded on this desktop: it can only be captured as it "
                          "is, and this command shows nothing on it",
                          {}});
    return {};
}

/// A recording that failed is not where the user looks for it.
Result<RecordingOutput> withPlaceOfWhatIsKept(Result<RecordingOutput> output) {
    if (output)
        return output;
    Error error = output.error();
    if (const auto kept = error.info.find("kept"); kept != error.info.end())
        error.message += "; what was recorded until then is kept as " + kept->second;
    return fail(std::move(error));
}

/// One recording of the command line, from start to finished file.
class RecordRun {
public:
    RecordRun(const CommandContext& context, Platform platform, RecordArguments arguments)
        : m_context(context)
        , m_arguments(std::move(arguments))
        , m_pointerEffects(makePointerEffects(context, platform, m_arguments))
        , m_recorder(std::move(platform), makeFileMovieWriter, m_captureQueue, context.mainQueue) {}

    QCoro::Task<Result<RecordingOutput>> record(CaptureSelection selection) {
        const StopSignals signals([this] { interrupt(); });
        RecordingRequest request;
        request.selection = std::move(selection);
        request.quality = m_arguments.quality;
        request.outputDirectory = m_arguments.outputDirectory;
        request.now = QDateTime::currentDateTime();
        request.offersMicrophone = false;
        request.clickSoundEnabled = m_arguments.clickSound.has_value();
        request.clickSoundStyle = m_arguments.clickSound.value_or(ClickSoundStyle::soft);
        request.pointerEffectsMonitor = m_pointerEffects;
        request.onFirstFrame = [this] { begin(); };

        CO_TRY(co_await m_recorder.startRecording(std::move(request), [this](Result<RecordingOutput> output) {
            m_output = std::move(output);
            if (m_whenFinished)
                m_whenFinished({});
        }));
        if (m_isInterrupted)
            m_recorder.stopRecording();
        if (!m_output)
            (void)co_await awaitCompletion<void>([this](Completion<void> done) { m_whenFinished = std::move(done); });
        if (m_isInterrupted && !m_begin)
            co_return fail(interruptedError());
        co_return withPlaceOfWhatIsKept(*m_output);
    }

private:
    void begin() {
        m_begin = m_context.clock->now();
        if (m_arguments.seconds) {
            const std::chrono::duration<double> length(*m_arguments.seconds);
            m_end = m_context.scheduler->after(std::chrono::duration_cast<Duration>(length),
                                               [this] { m_recorder.stopRecording(); });
        }
        m_ticks = m_context.scheduler->every(250ms, [this] { showElapsed(); });
    }

    void showElapsed() {
        const int seconds = int((m_context.clock->now() - *m_begin).seconds());
        m_status.show(QStringLiteral("recording %1:%2, %3 frames written, %4 dropped (Ctrl-C ends it)")
                          .arg(seconds / 60)
                          .arg(seconds % 60, 2, 10, QLatin1Char('0'))
                          .arg(m_recorder.writtenFrameCount())
                          .arg(m_recorder.droppedFrameCount()));
    }

    void interrupt() {
        m_isInterrupted = true;
        m_recorder.stopRecording();
    }

    const CommandContext& m_context;
    RecordArguments m_arguments;
    std::shared_ptr<PointerEffectsMonitor> m_pointerEffects;
    SerialQueue m_captureQueue{"KELDRA.StreamRecordingSession"};
    ScreenRecorder m_recorder;
    std::optional<MediaTime> m_begin;
    bool m_isInterrupted = false;
    std::optional<Result<RecordingOutput>> m_output;
    Completion<void> m_whenFinished;
    Timer m_end;
    Timer m_ticks;
    StatusLine m_status;
};

} // namespace

QCoro::Task<Result<void>> runRecord(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const RecordArguments arguments, parseRecordArguments(words));
    CO_TRY_LET(Platform platform, context.makePlatform());
    CO_TRY_LET(CaptureSelection selection,
               selectionFor(arguments, platform.screens->screens(), platform.windows->windows()));
    CO_TRY(checkEffects(platform, arguments));

    QString path;
    {
        RecordRun run(context, std::move(platform), arguments);
        CO_TRY_LET(const RecordingOutput output, co_await run.record(std::move(selection)));
        path = output.url.toLocalFile();
        if (const QString reason = endingWords(output.ending); !reason.isEmpty())
            logLine("[KELDRA]", reason.toStdString());
    }
    if (!writeResult(path.toLocal8Bit() + '\n'))
        co_return fail(unwritableOutput());
    co_return {};
}

} // namespace keldra
