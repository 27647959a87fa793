#include "RecorderFixture.h"
#include "recording/ScreenRecorderError.h"

namespace keldra {
namespace {

const Error diskFull{"POSIX", 28, "No space left on device", {}};

using ScreenRecorderTest = RecorderFixture;

TEST_F(ScreenRecorderTest, WritesFromTheFirstFrameToTheMomentOfTheStop) {
    ASSERT_TRUE(start());
    EXPECT_EQ(stream->configuration->minimumFrameInterval, Duration(1s) / 60);
    EXPECT_EQ(writer->video.averageBitRate, 6'000'000);
    EXPECT_EQ(writer->video.maximumKeyFrameInterval, 120);
    EXPECT_TRUE(writer->isPrepared);
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

TEST_F(ScreenRecorderTest, AStartThatFailsAfterItsFirstPictureLeavesNoFile) {
    stream->startError = diskFull;
    stream->earlyFrame = ScreenFrame{coordinatesPicture(640, 360), MediaTime(1000, 1)};
    EXPECT_FALSE(start());
    EXPECT_EQ(writer->samples.size(), 1u);
    EXPECT_TRUE(writer->isGivenUp);
    EXPECT_FALSE(writer->end);
    EXPECT_TRUE(outputs.empty()) << "the start has told already";
}

TEST_F(ScreenRecorderTest, AStopBeforeTheFirstFrameIsAnErrorAndLeavesNoFile) {
    ASSERT_TRUE(start());
    stop();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error().message, "Could not prepare the capture stream.");
    EXPECT_TRUE(writer->isGivenUp);
}

TEST_F(ScreenRecorderTest, TheFirstFailureEndsTheRecording) {
    const Error closed{"X11", 1, "The recorded window was closed.", {}};
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    stream->die(closed);
    stop();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error(), closed);
    EXPECT_TRUE(writer->isGivenUp);
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

TEST_F(ScreenRecorderTest, AWriterThatFailsUnderAStillScreenIsHeardAtOnceAndWhatItKeepsIsNamed) {
    request.recoveryDirectory = "/recovery";
    writer->keptAt = "/recovery/take.mov";
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    writer->error = diskFull;
    writer->tell(MovieWriterTrouble::failed);
    time.settle();
    ASSERT_EQ(outputs.size(), 1u);
    ASSERT_EQ(outputs[0].error(), diskFull);
    EXPECT_EQ(outputs[0].error().info.at("kept"), "/recovery/take.mov");
    EXPECT_EQ(writer->recoveryFolder, "/recovery");
    EXPECT_EQ(stream->stops, 1);
}

TEST_F(ScreenRecorderTest, ADiskNearlyFullEndsTheRecordingAsAStopDoes) {
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    time.advance(5s);
    writer->tell(MovieWriterTrouble::diskNearlyFull);
    writer->tell(MovieWriterTrouble::diskNearlyFull);
    time.settle();
    ASSERT_EQ(outputs.size(), 1u);
    ASSERT_TRUE(outputs[0]);
    EXPECT_EQ(outputs[0]->ending, RecordingEnding::diskNearlyFull);
    EXPECT_EQ(*writer->end, MediaTime(1005, 1));
    EXPECT_FALSE(writer->isGivenUp);
    EXPECT_EQ(stream->stops, 1);
    stop();
    EXPECT_EQ(outputs.size(), 1u);
}

TEST_F(ScreenRecorderTest, AStopThatWasFirstStaysAStop) {
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    stop();
    writer->tell(MovieWriterTrouble::diskNearlyFull);
    time.settle();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0]->ending, RecordingEnding::stopped);
}

TEST_F(ScreenRecorderTest, AFinishThatFailsGivesTheFileUp) {
    ASSERT_TRUE(start());
    deliver(1000s, coordinatesPicture(640, 360));
    writer->error = diskFull;
    stop();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].error(), diskFull);
    EXPECT_TRUE(writer->isGivenUp);
    EXPECT_FALSE(outputs[0].error().info.contains("kept")) << "nothing was worth keeping";
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
