#pragma once

#include "base/Result.h"
#include "platform/CaptureSelection.h"
#include "recording/CameraOverlayState.h"
#include "recording/ClickSoundStyle.h"
#include "recording/RecordingOutput.h"
#include "recording/RecordingQuality.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <memory>

namespace keldra {

/// What the user has chosen for one recording.
struct RecordingOptions {
    CaptureSelection selection;
    bool microphoneEnabled = false;
    /// Empty for the desktop's choice.
    QString microphoneDeviceID;
    RecordingQuality quality = RecordingQuality::high;
    bool clickSoundEnabled = false;
    ClickSoundStyle clickSoundStyle = ClickSoundStyle::soft;
    QString outputDirectory;
    /// Where the camera bubble stands while the recording runs.
    std::shared_ptr<CameraOverlayState> cameraOverlayState;
};

/// What the model asks of the recorder: one recording at a time. Main thread.
class RecordingEngine {
public:
    using OnFinish = std::function<void(Result<RecordingOutput>)>;

    virtual ~RecordingEngine() = default;
    /// `onFinish` runs once, on any thread, when the recording has ended; never after a start that failed.
    virtual QCoro::Task<Result<void>> start(RecordingOptions options, OnFinish onFinish) = 0;
    /// Ends the recording; the end is told through `onFinish`.
    virtual void stop() = 0;
    /// False when the recording has no microphone to switch.
    virtual bool setMicrophoneEnabled(bool isEnabled) = 0;
};

} // namespace keldra
