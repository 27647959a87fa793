#include "recording/ScreenRecorder.h"

#include "doubles/FixedDesktop.h"
#include "doubles/ScriptedMovieWriter.h"
#include "doubles/ScriptedScreenStream.h"
#include "doubles/VirtualTime.h"
#include "recording/ScreenRecorderError.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

const Error diskFull{"POSIX", 28, "No space left on device", {}};

/// A BGRA picture whose pixel (x, y) holds its own coordinates.
PixelBuffer coordinatesPicture(int width, int height) {
    PixelBuffer picture = PixelBuffer::allocate(PixelFormat::bgra, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            reinterpret_cast<std::uint32_t*>(picture.mutableRow(0, y))[x] = 0xff000000U | std::uint32_t(y << 12 | x);
    return picture;
}

std::uint32_t pixel(const PixelBuffer& picture, int x, int y) {
    return reinterpret_cast<const std::uint32_t*>(picture.row(0, y))[x] & 0xffffffU;
}

std::uint32_t coordinates(int x, int y) {
    return std::uint32_t(y << 12 | x);
}

class ScreenRecorderTest : public testing::Test {
protected:
    ScreenRecorderTest() {
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
        parts.shareableContent = content;
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

TEST_F(ScreenRecorderTest, WritesFromTheFirstFrameToTheMomentOfTheStop) {
    ASSERT_TRUE(start());
    EXPECT_EQ(stream->configuration->minimumFrameInterval, Duration(1s) / 60);
    EXPECT_EQ(writer->video.averageBitRate, 6'000'000);
    EXPECT_EQ(writer->video.maximumKeyFrameInterval, 120);
    EXPECT_FALSE(writer->sessionStart) << "nothing is written before the first frame";

    const PixelBuffer picture = coordinatesPicture(640, 360);
    deliver(1000s, picture);
    deliver(1001s, picture);
    EXPECT_EQ(firstFrames, 1);
    time.advance(8s);
    stop();

    EXPECT_EQ(*writer->sessionStart, MediaTime(1000, 1));
    EXPECT_EQ(stamps(), (std::vector{MediaTime(1000, 1), MediaTime(1001, 1)}));
    EXPECT_EQ(writer->samples[0].picture.data(), picture.data()) << "a whole display's pixels are not copied";
    EXPECT_EQ(*writer->end, MediaTime(1008, 1));
    ASSERT_EQ(outputs.size(), 1u);
    ASSERT_TRUE(outputs[0]);
    EXPECT_EQ(outputs[0]->url, QUrl::fromLocalFile(folder.filePath("KELDRA-2026-01-02-03-04-05.mov")));
    EXPECT_EQ(outputs[0]->url.toLocalFile().toStdString(), writer->path);
    stop();
    EXPECT_EQ(outputs.size(), 1u);
}

TEST_F(ScreenRecorderTest, StampsRiseStrictlyWhateverTheStreamSays) {
    ASSERT_TRUE(start());
    for (const Duration at : {1000s, 1000s, 999s, 1001s})
        deliver(at, coordinatesPicture(640, 360));
    const MediaTime first(1000, 1);
    EXPECT_EQ(stamps(), (std::vector{first, first + MediaTime(1, 600), first + MediaTime(2, 600), MediaTime(1001, 1)}));
}

TEST_F(ScreenRecorderTest, DropsTheNewestFrameWhileTheEncoderIsBehind) {
    ASSERT_TRUE(start());
    writer->isReady = false;
    deliver(1000s, coordinatesPicture(640, 360));
    EXPECT_EQ(firstFrames, 0);
    writer->isReady = true;
    deliver(1001s, coordinatesPicture(640, 360));
    EXPECT_EQ(stamps(), (std::vector{MediaTime(1001, 1)}));
    EXPECT_EQ(*writer->sessionStart, MediaTime(1000, 1)) << "a dropped frame still starts the movie's time";
    EXPECT_EQ(recorder.droppedFrameCount(), 1);
    EXPECT_EQ(recorder.writtenFrameCount(), 1);
}

TEST_F(ScreenRecorderTest, CutsARegionOutOfItsDisplay) {
    request.selection = RegionSelection{1, QRectF(100, 60, 200, 100)};
    ASSERT_TRUE(start());
    EXPECT_EQ(stream->configuration->width, 640);
    EXPECT_EQ(writer->video.width, 200);
    deliver(1000s, coordinatesPicture(640, 360));
    const PixelBuffer& frame = writer->samples.at(0).picture;
    EXPECT_EQ(pixel(frame, 0, 0), coordinates(100, 200));
    EXPECT_EQ(pixel(frame, 199, 99), coordinates(299, 299));
}

TEST_F(ScreenRecorderTest, ARegionBeyondItsDisplayIsBlackThere) {
    request.selection = RegionSelection{1, QRectF(-20, 300, 100, 80)};
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    const PixelBuffer& frame = writer->samples.at(0).picture;
    ASSERT_EQ(frame.width(), 100);
    EXPECT_EQ(pixel(frame, 19, 79), 0u);
    EXPECT_EQ(pixel(frame, 20, 19), 0u);
    EXPECT_EQ(pixel(frame, 20, 20), coordinates(0, 0));
    EXPECT_EQ(pixel(frame, 99, 79), coordinates(79, 59));
}

TEST_F(ScreenRecorderTest, AWindowIsRecordedAtItsEvenSize) {
    request.selection = WindowSelection{1, 77, QRectF(), "Editor"};
    ASSERT_TRUE(start());
    EXPECT_EQ(std::get<WindowSource>(stream->configuration->source).windowID, 77u);
    EXPECT_EQ(writer->video.width, 300);
    EXPECT_EQ(writer->video.height, 200);
}

TEST_F(ScreenRecorderTest, AStartThatFailsTellsWhyAndFinishesNothing) {
    const std::vector<std::tuple<std::string, CaptureSelection, std::optional<Error>, QString>> rows = {
        {"Could not find the selected display.", DisplaySelection{9, ""}, {}, folder.path()},
        {"Could not find the selected window.", WindowSelection{1, 78, {}, ""}, {}, folder.path()},
        {"No space left on device", DisplaySelection{1, ""}, diskFull, folder.path()},
        {"The output folder is unavailable or not writable.", DisplaySelection{1, ""}, {}, folder.filePath("none")},
    };
    for (const auto& [words, selection, startError, directory] : rows) {
        request.selection = selection;
        request.outputDirectory = directory;
        stream->startError = startError;
        const Result<void> started = start();
        ASSERT_FALSE(started) << words;
        EXPECT_EQ(started.error().message, words);
    }
    EXPECT_TRUE(outputs.empty());

    stream->startError.reset();
    request.outputDirectory = folder.path();
    EXPECT_TRUE(start()) << "a failed start leaves the recorder usable";
}

TEST_F(ScreenRecorderTest, AStopBeforeTheFirstFrameIsAnErrorAndLeavesNoFile) {
    ASSERT_TRUE(start());
    stop();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error().message, "Could not prepare the capture stream.");
    EXPECT_TRUE(writer->isCancelled);
}

TEST_F(ScreenRecorderTest, TheFirstFailureEndsTheRecording) {
    const Error closed{"X11", 1, "The recorded window was closed.", {}};
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    stream->die(closed);
    stop();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error(), closed);
    EXPECT_TRUE(writer->isCancelled);
    EXPECT_FALSE(writer->end);
}

TEST_F(ScreenRecorderTest, AWriterThatFailsEndsTheRecordingWithItsWords) {
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    writer->error = diskFull;
    deliver(1001s, coordinatesPicture(640, 360));
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error(), diskFull);
    deliver(1002s, coordinatesPicture(640, 360));
    EXPECT_EQ(writer->samples.size(), 1u);
}

TEST_F(ScreenRecorderTest, AFileThatCannotBeOpenedEndsTheRecording) {
    writer->startError = diskFull;
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error(), diskFull);
}

} // namespace
} // namespace keldra
