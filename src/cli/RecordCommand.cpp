#include "cli/RecordCommand.h"

#include "async/AwaitCompletion.h"
#include "async/CoTry.h"
#include "base/Log.h"
#include "base/SerialQueue.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "cli/RecordArguments.h"
#include "cli/RecordDevices.h"
#include "cli/StopSignals.h"
#include "media/FileMovieWriter.h"
#include "recording/CapturePath.h"
#include "recording/MicrophoneLevelMonitor.h"
#include "recording/ScreenRecorder.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

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

/// Ripples, lights and the camera are windows of ours where the display is recorded as it is, and this command has
/// none.
Result<void> checkEffects(const Platform& platform, const RecordArguments& arguments) {
    const bool isAsked = arguments.showsClicks || arguments.showsHighlight || arguments.camera;
    if (isAsked && capturePathOf(platform) == CapturePath::display)
        return fail(Error{"Record",
                          2,
                          "--clicks, --highlight and --camera cannot be recorded on this desktop: it can only be "
                          "captured as it is, and this command shows nothing on it",
                          {}});
    return {};
}

/// The devices that the arguments name.
struct RecordDevices {
    std::optional<QString> microphoneID;
    std::optional<QString> cameraID;
};

Result<RecordDevices> devicesFor(const Platform& platform, const RecordArguments& arguments) {
    RecordDevices devices;
    if (arguments.microphone) {
        TRY_LET(const CaptureDeviceOption microphone,
                deviceFor(platform, CaptureDeviceKind::microphone, *arguments.microphone));
        devices.microphoneID = microphone.id;
    }
    if (arguments.camera) {
        TRY_LET(const CaptureDeviceOption camera, deviceFor(platform, CaptureDeviceKind::camera, *arguments.camera));
        devices.cameraID = camera.id;
    }
    return devices;
}

QString levelBar(double level) {
    constexpr int length = 10;
    const int filled = int(std::lround(level * length));
    return QStringLiteral("[%1%2]").arg(QString(filled, u'#'), QString(length - filled, u' '));
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
    RecordRun(const CommandContext& context, Platform platform, RecordArguments arguments, RecordDevices devices)
        : m_context(context)
        , m_platform(platform)
        , m_arguments(std::move(arguments))
        , m_devices(std::move(devices))
        , m_pointerEffects(makePointerEffects(context, platform, m_arguments))
        , m_recorder(std::move(platform), makeFileMovieWriter, m_captureQueue, context.mainQueue) {}
    ~RecordRun() {
        if (m_platform.devices)
            m_platform.devices->setOnChanged({});
    }

    QCoro::Task<Result<RecordingOutput>> record(CaptureSelection selection) {
        const StopSignals signals([this] { interrupt(); });
        m_selection = selection;
        CO_TRY(co_await startCamera());
        if (m_isInterrupted)
            co_return fail(interruptedError());
        RecordingRequest request;
        request.selection = std::move(selection);
        request.quality = m_arguments.quality;
        request.outputDirectory = m_arguments.outputDirectory;
        request.now = QDateTime::currentDateTime();
        request.microphoneEnabled = m_devices.microphoneID.has_value();
        request.microphoneDeviceID = m_devices.microphoneID.value_or(QString());
        request.offersMicrophone = false;
        request.cameraService = m_camera;
        request.cameraOverlayState = m_camera ? m_bubble : nullptr;
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
    QCoro::Task<Result<void>> startCamera() {
        if (!m_devices.cameraID)
            co_return {};
        m_camera = std::make_shared<CameraService>(m_platform.devices, m_platform.makeCameraSession(), m_cameraQueue);
        if (!co_await m_camera->start(*m_devices.cameraID))
            co_return fail(Error{"Record", 4, m_camera->userFacingError().toStdString(), {}});
        placeBubble();
        m_platform.devices->setOnChanged([this] { placeBubble(); });
        if (std::holds_alternative<WindowSelection>(m_selection))
            m_bubbleTicks = m_context.scheduler->every(33ms, [this] { placeBubble(); });
        co_return {};
    }

    /// A camera that was unplugged leaves no picture behind.
    void placeBubble() {
        CameraOverlaySnapshot bubble = bubbleFor(m_selection, *m_platform.screens, *m_platform.windows);
        const auto cameras = m_platform.devices->devices(CaptureDeviceKind::camera);
        bubble.isVisible = std::any_of(cameras.begin(), cameras.end(),
                                       [this](const auto& each) { return each.id == m_devices.cameraID; });
        m_bubble->setSnapshot(bubble);
    }

    void startMeter() {
        if (!m_devices.microphoneID || !m_status.isShown())
            return;
        m_meter.emplace(m_platform.devices, m_platform.makeAudioMeter(), *m_context.scheduler);
        (void)m_meter->start(*m_devices.microphoneID);
    }

    void begin() {
        m_begin = m_context.clock->now();
        if (m_arguments.seconds) {
            const std::chrono::duration<double> length(*m_arguments.seconds);
            m_end = m_context.scheduler->after(std::chrono::duration_cast<Duration>(length),
                                               [this] { m_recorder.stopRecording(); });
        }
        startMeter();
        m_ticks = m_context.scheduler->every(m_meter ? 100ms : 250ms, [this] { showElapsed(); });
    }

    void showElapsed() {
        const int seconds = int((m_context.clock->now() - *m_begin).seconds());
        m_status.show(QStringLiteral("recording %1:%2, %3 frames written, %4 dropped%5 (Ctrl-C ends it)")
                          .arg(seconds / 60)
                          .arg(seconds % 60, 2, 10, QLatin1Char('0'))
                          .arg(m_recorder.writtenFrameCount())
                          .arg(m_recorder.droppedFrameCount())
                          .arg(m_meter ? QStringLiteral(", microphone ") + levelBar(m_meter->level()) : QString()));
    }

    void interrupt() {
        m_isInterrupted = true;
        m_recorder.stopRecording();
    }

    const CommandContext& m_context;
    const Platform m_platform;
    RecordArguments m_arguments;
    const RecordDevices m_devices;
    CaptureSelection m_selection;
    std::shared_ptr<PointerEffectsMonitor> m_pointerEffects;
    SerialQueue m_cameraQueue{"KELDRA.CameraFrames"};
    std::shared_ptr<CameraService> m_camera;
    const std::shared_ptr<CameraOverlayState> m_bubble = std::make_shared<CameraOverlayState>();
    Timer m_bubbleTicks;
    std::optional<MicrophoneLevelMonitor> m_meter;
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
    CO_TRY_LET(RecordDevices devices, devicesFor(platform, arguments));

    QString path;
    {
        RecordRun run(context, std::move(platform), arguments, std::move(devices));
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
