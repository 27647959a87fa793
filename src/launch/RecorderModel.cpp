#include "launch/RecorderModel.h"

#include "base/SerialQueue.h"
#include "media/FileMovieWriter.h"
#include "recording/ScreenRecorder.h"

namespace keldra {
namespace {

struct Recorder {
    explicit Recorder(RecorderModelParts parts)
        : camera(std::make_shared<CameraService>(
              parts.platform.devices, parts.platform.makeCameraSession ? parts.platform.makeCameraSession() : nullptr,
              cameraQueue))
        , levels(parts.platform.devices, parts.platform.makeAudioMeter ? parts.platform.makeAudioMeter() : nullptr,
                 parts.scheduler)
        , pointerEffects(std::make_shared<PointerEffectsMonitor>(parts.platform.pointer, parts.platform.ownWindows,
                                                                 parts.platform.clock, parts.scheduler))
        , preferences(AppPreferences::ofUser())
        , recorder(parts.platform, makeFileMovieWriter, captureQueue, parts.mainQueue)
        , engine(recorder)
        , model({parts.platform, parts.application, *preferences, engine, camera, levels, pointerEffects,
                 parts.telemetry, parts.scheduler, parts.mainQueue, [] { return QDateTime::currentDateTime(); }}) {}

    SerialQueue cameraQueue{"KELDRA.CameraFrames"};
    SerialQueue captureQueue{"KELDRA.StreamRecordingSession"};
    std::shared_ptr<CameraService> camera;
    MicrophoneLevelMonitor levels;
    std::shared_ptr<PointerEffectsMonitor> pointerEffects;
    std::unique_ptr<AppPreferences> preferences;
    ScreenRecorder recorder;
    ScreenRecordingEngine engine;
    AppModel model;
};

} // namespace

std::shared_ptr<AppModel> makeRecorderModel(RecorderModelParts parts) {
    auto recorder = std::make_shared<Recorder>(std::move(parts));
    return {recorder, &recorder->model};
}

} // namespace keldra
