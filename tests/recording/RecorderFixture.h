#pragma once

#include "doubles/FixedDesktop.h"
#include "doubles/ScriptedCaptureDevices.h"
#include "doubles/ScriptedMicrophone.h"
#include "doubles/ScriptedMovieWriter.h"
#include "doubles/ScriptedScreenStream.h"
#include "doubles/VirtualTime.h"
#include "recording/ScreenRecorder.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {

using namespace std::chrono_literals;

/// A BGRA picture whose pixel (x, y) holds its own coordinates.
inline PixelBuffer coordinatesPicture(int width, int height) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y))[x] = 0xff000000U | std::uint32_t(y << 12 | x);
    return picture;
}

inline std::uint32_t pixel(const PixelBuffer& picture, int x, int y) {
    return reinterpret_cast<const std::uint32_t*>(picture.row(0, y))[x] & 0xffffffU;
}

inline std::uint32_t coordinates(int x, int y) {
    return std::uint32_t(y << 12 | x);
}

/// A recorder between scripted doubles, under virtual time. The display is 640 by 360 points.
class RecorderFixture : public testing::Test {
protected:
    RecorderFixture() {
        content->answer = ShareableContentSnapshot{{{1, QRectF(0, 0, 640, 360)}}, {{77, QRectF(10, 10, 301, 201)}}};
        request.selection = DisplaySelection{1, "Main"};
        request.outputDirectory = folder.path();
        request.now = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5));
        request.onFirstFrame = [this] { ++firstFrames; };
    }

    Platform platform() {
        Platform parts;
        parts.clock = time.clock();
        parts.screens = screens;
        parts.windows = windows;
        parts.shareableContent = content;
        parts.devices = devices;
        parts.makeMicrophoneStream = [this] {
            return std::make_unique<ScriptedMicrophone>(microphone, time.mainQueue());
        };
        parts.makeScreenStream = [this] { return std::make_unique<ScriptedScreenStream>(stream, time.mainQueue()); };
        return parts;
    }

    Result<void> start() {
        std::optional<Result<void>> started;
        auto task = recorder.startRecording(request, [this](Result<RecordingOutput> output) {
            EXPECT_TRUE(time.mainQueue().isCurrent());
            outputs.push_back(std::move(output));
        });
        time.settle();
        EXPECT_TRUE(task.isReady());
        task.then([&](Result<void> result) { started = std::move(result); });
        return *started;
    }

    void deliver(Duration at, PixelBuffer picture) {
        const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(at).count();
        stream->deliver({std::move(picture), MediaTime(microseconds, HostClock::timescale)});
        time.settle();
    }

    void stop() {
        recorder.stopRecording();
        time.settle();
    }

    std::vector<MediaTime> stamps() const {
        std::vector<MediaTime> times;
        for (const auto& sample : writer->samples)
            times.push_back(sample.time);
        return times;
    }

    QTemporaryDir folder;
    VirtualTime time;
    std::shared_ptr<FixedScreens> screens = std::make_shared<FixedScreens>(
        QList<Screen>{Screen{1, "Main", QRectF(0, 0, 640, 360), QRectF(0, 0, 640, 360), 1}});
    std::shared_ptr<FixedWindows> windows = std::make_shared<FixedWindows>();
    std::shared_ptr<ScriptedCaptureDevices> devices = std::make_shared<ScriptedCaptureDevices>(time.mainQueue());
    std::shared_ptr<MicrophoneScript> microphone = std::make_shared<MicrophoneScript>();
    std::shared_ptr<FixedShareableContent> content = std::make_shared<FixedShareableContent>(time.mainQueue());
    std::shared_ptr<ScreenStreamScript> stream = std::make_shared<ScreenStreamScript>();
    std::shared_ptr<MovieWriterScript> writer = std::make_shared<MovieWriterScript>();
    RecordingRequest request;
    int firstFrames = 0;
    std::vector<Result<RecordingOutput>> outputs;
    ScreenRecorder recorder{platform(),
                            [this](const std::string& path) -> Result<std::unique_ptr<MovieWriter>> {
                                writer->path = path;
                                return std::make_unique<ScriptedMovieWriter>(writer);
                            },
                            time.queue("capture"), time.mainQueue()};
};

} // namespace keldra
