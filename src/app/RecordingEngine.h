#pragma once

#include "recording/ScreenRecorder.h"

namespace keldra {

/// What the model asks of the recorder: one recording at a time. Main thread.
class RecordingEngine {
public:
    using OnFinish = std::function<void(Result<RecordingOutput>)>;

    virtual ~RecordingEngine() = default;
    /// `onFinish` runs once, on any thread, when the recording has ended; never after a start that failed.
    virtual QCoro::Task<Result<void>> start(RecordingRequest request, OnFinish onFinish) = 0;
    /// Ends the recording; the end is told through `onFinish`.
    virtual void stop() = 0;
    /// False when the recording has no microphone to switch.
    virtual bool setMicrophoneEnabled(bool isEnabled) = 0;
    /// The desktop still asks its user what to record: of this start there is nothing yet that could be lost.
    virtual bool isAskingUser() const { return false; }
};

/// The real one.
class ScreenRecordingEngine final : public RecordingEngine {
public:
    /// `recorder` lives longer.
    explicit ScreenRecordingEngine(ScreenRecorder& recorder) : m_recorder(recorder) {}

    QCoro::Task<Result<void>> start(RecordingRequest request, OnFinish onFinish) override {
        return m_recorder.startRecording(std::move(request), std::move(onFinish));
    }
    void stop() override { m_recorder.stopRecording(); }
    bool setMicrophoneEnabled(bool isEnabled) override { return m_recorder.setMicrophoneEnabled(isEnabled); }
    bool isAskingUser() const override { return m_recorder.isAskingUser(); }

private:
    ScreenRecorder& m_recorder;
};

} // namespace keldra
